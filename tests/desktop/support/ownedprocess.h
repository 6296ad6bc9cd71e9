#pragma once

#include <QProcess>

/// A process that ends with this object, and with the test when that is ended itself.
class OwnedProcess : public QProcess
{
public:
    OwnedProcess();
    ~OwnedProcess() override;

    /// Starts a program and returns the first line that it prints.
    QByteArray startAndReadLine(const QString &program, const QStringList &arguments);
    /// Asks it to end and waits until it has.
    void end();
};
