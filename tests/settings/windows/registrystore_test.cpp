#include "settings/appsettings.h"
#include "tests/support/teststore.h"
#include "tests/support/windowfixture.h"
#include "tests/support/windows/testkey.h"

#include <windows.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto programsKey = L"Software\\Tovan\\Tovan Network Monitor";

/// A value as any other program may leave it in the registry.
struct RegistryValue
{
    DWORD type;
    QByteArray data;
};

void setInRegistry(const QString &name, const RegistryValue &value)
{
    QCOMPARE(RegSetKeyValueW(HKEY_CURRENT_USER, programsKey, name.toStdWString().c_str(),
                             value.type, value.data.constData(),
                             static_cast<DWORD>(value.data.size())),
             ERROR_SUCCESS);
}

/// Whether the user that runs the tests has a key of this name, as other processes see it.
bool userHas(const wchar_t *name)
{
    HKEY user = nullptr;
    HKEY found = nullptr;
    // The key of the user is not looked up by the name that the test process has given to its own.
    if (RegOpenCurrentUser(KEY_READ, &user) != ERROR_SUCCESS)
        qFatal("the user has no key");
    const bool has = RegOpenKeyExW(user, name, 0, KEY_READ, &found) == ERROR_SUCCESS;
    if (has)
        RegCloseKey(found);
    RegCloseKey(user);
    return has;
}

} // namespace

/// The real window on a store in the registry.
class RegistryStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesOfOtherTypesLetTheWindowStartAndSave_data();
    void valuesOfOtherTypesLetTheWindowStartAndSave();
    void aThousandRulesAreKept();
    void aTestLeavesTheUsersStoreAlone();
};

void RegistryStoreTest::valuesOfOtherTypesLetTheWindowStartAndSave_data()
{
    QTest::addColumn<RegistryValue>("value");
    QTest::newRow("number") << RegistryValue{REG_DWORD, QByteArray("\xff\xff\xff\xff", 4)};
    QTest::newRow("large number") << RegistryValue{REG_QWORD, QByteArray(8, '\xff')};
    QTest::newRow("short number") << RegistryValue{REG_DWORD, QByteArray("\1", 1)};
    QTest::newRow("bytes") << RegistryValue{REG_BINARY, QByteArray("\0\1\xff\xfe", 4)};
    QTest::newRow("nothing") << RegistryValue{REG_NONE, QByteArray()};
    QTest::newRow("empty text") << RegistryValue{REG_SZ, QByteArray(2, '\0')};
    QTest::newRow("text without an end") << RegistryValue{REG_SZ, QByteArray("a\0b\0", 4)};
    QTest::newRow("half a character") << RegistryValue{REG_SZ, QByteArray("a\0b", 3)};
    QTest::newRow("texts") << RegistryValue{REG_MULTI_SZ, QByteArray("a\0\0\0b\0\0\0\0\0", 10)};
    QTest::newRow("path") << RegistryValue{REG_EXPAND_SZ, QByteArray("%\0P\0%\0\0\0", 8)};
}

void RegistryStoreTest::valuesOfOtherTypesLetTheWindowStartAndSave()
{
    QFETCH(RegistryValue, value);
    WindowFixture fixture;
    for (const SettingRow &row : settingsTable()) {
        // A window that is hidden or paused would show nothing of it.
        if (row.key != "startMinimized"_L1 && row.key != "pauseOnLaunch"_L1)
            setInRegistry(QString(row.key), value);
    }
    for (const auto *name : {u"dayKey", u"monthKey", u"todayBytes", u"monthBytes"})
        setInRegistry(QString::fromUtf16(name), value);

    fixture.open();
    fixture.tick();
    for (const SettingRow &row : settingsTable()) {
        if (const auto *number = std::get_if<NumberSetting>(&row.setting)) {
            const int stored = WindowFixture::stored(QString(row.key)).toInt();
            QVERIFY2(number->low <= stored && stored <= number->high, row.key.data());
        }
    }
    QCOMPARE(WindowFixture::stored(u"dayKey"_s), QDate::currentDate().toString(u"yyyy-MM-dd"));
}

void RegistryStoreTest::aThousandRulesAreKept()
{
    constexpr int rules = 1000;
    WindowFixture fixture;
    WindowFixture::store(u"rules/size"_s, rules);
    for (int rule = 1; rule <= rules; ++rule)
        WindowFixture::store(u"rules/%1/app"_s.arg(rule), u"application %1"_s.arg(rule));
    fixture.open();
    QCOMPARE(fixture.rulesTable()->rowCount(), rules);
    fixture.tick();
    fixture.close();
    fixture.open();
    QCOMPARE(fixture.rulesTable()->rowCount(), rules);
}

void RegistryStoreTest::aTestLeavesTheUsersStoreAlone()
{
    const bool before = userHas(programsKey);
    {
        WindowFixture fixture;
        fixture.open();
        fixture.tick();
        QVERIFY(storeExists());
        QVERIFY(userHas((testKey().toStdWString() + L'\\' + programsKey).c_str()));
        removeStore();
    }
    QCOMPARE(userHas(programsKey), before);
}

TOVAN_WINDOW_TEST(registrystore_test, RegistryStoreTest)
#include "registrystore_test.moc"
