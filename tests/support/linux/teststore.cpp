#include "tests/support/teststore.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

QString storePath()
{
    return QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s).fileName();
}

} // namespace

void useStoreOfItsOwn()
{
    static const QTemporaryDir directory;
    if (!directory.isValid())
        qFatal("no directory for the settings of the test");
    qputenv("XDG_CONFIG_HOME", directory.path().toUtf8());
}

bool storeExists()
{
    return QFile::exists(storePath());
}

void removeStore()
{
    QFile::remove(storePath());
}
