#include "settings/userstore.h"

#include <QSettings>

using namespace Qt::StringLiterals;

// The store is a key of the registry, which no other program can put a lock or a device in place
// of.

QString storeName()
{
    return openStore()->fileName();
}

std::unique_ptr<QSettings> openStore()
{
    return std::make_unique<QSettings>(u"Tovan"_s, u"Tovan Network Monitor"_s);
}

std::unique_ptr<QSettings> openStoreToSave(qint64, std::chrono::milliseconds)
{
    return openStore();
}

// Nothing tells of a change of the keys below the store's own, where the rules are.
QByteArray storeMark()
{
    return {};
}
