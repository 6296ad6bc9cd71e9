#pragma once

#include "tests/support/windowfixture.h"

/// The octets of the window's store; none when it is not there or no file.
inline QByteArray storeContent()
{
    QFile file(WindowFixture::storePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Writes into the file, which need not be there, nor its folder.
inline void writeFile(const QString &path, const QByteArray &content)
{
    QVERIFY(QFileInfo(path).dir().mkpath(QStringLiteral(".")));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}
