#include "tests/support/teststore.h"

#include "tests/support/windows/testkey.h"

#include <QSettings>

#include <string>
#include <windows.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto allTests = L"Software\\Tovan Tests";

/// A key that this process finds in the place of the user's (RegOverridePredefKey): the settings
/// that the program reads and writes are below it.
class OwnUserKey
{
public:
    OwnUserKey()
    {
        // An earlier process of this number may have been killed.
        RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
        if (RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                            nullptr, &m_key, nullptr)
                != ERROR_SUCCESS
            || RegOverridePredefKey(HKEY_CURRENT_USER, m_key) != ERROR_SUCCESS)
            qFatal("no key for the settings of the test");
    }
    ~OwnUserKey()
    {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(m_key);
        RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
        // Only the last one of those that run succeeds in this.
        RegDeleteKeyW(HKEY_CURRENT_USER, allTests);
    }
    OwnUserKey(const OwnUserKey &) = delete;
    OwnUserKey &operator=(const OwnUserKey &) = delete;

private:
    std::wstring m_path = testKey().toStdWString();
    HKEY m_key = nullptr;
};

} // namespace

QString testKey()
{
    return QString::fromWCharArray(allTests) + u'\\' + QString::number(GetCurrentProcessId());
}

void useStoreOfItsOwn()
{
    static const OwnUserKey key;
}

bool storeExists()
{
    return !QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s).allKeys().isEmpty();
}

void removeStore()
{
    QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s).clear();
}
