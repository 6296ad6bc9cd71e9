#include "settings/appsettings.h"
#include "settings/profiles.h"
#include "tests/support/testmain.h"

#include <QtTest>

using namespace Qt::StringLiterals;

class ProfilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fiveProfilesInTheOrderOfTheirLists();
    void presetOverwritesItsFieldsAlone_data();
    void presetOverwritesItsFieldsAlone();
    void strictEnablesTheAlertsAtItsOwnLevels();
    void alertsOfStrictStayUnderAnyOtherProfile_data();
    void alertsOfStrictStayUnderAnyOtherProfile();
    void unknownNamesApplyBalanced_data();
    void unknownNamesApplyBalanced();
    void presetsLieWithinTheBoundsOfTheSettings();
};

void ProfilesTest::fiveProfilesInTheOrderOfTheirLists()
{
    const QStringList expected{u"Balanced"_s, u"Gaming"_s, u"Work"_s, u"Download"_s, u"Strict"_s};
    QCOMPARE(profileNames(), expected);
}

void ProfilesTest::presetOverwritesItsFieldsAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("refreshIntervalMs");
    QTest::addColumn<int>("maxTableRows");
    QTest::addColumn<int>("defaultLimitKbps");
    QTest::addColumn<bool>("compactMode");
    QTest::newRow("Balanced") << u"Balanced"_s << 1000 << 100 << 5000 << false;
    QTest::newRow("Gaming") << u"Gaming"_s << 500 << 60 << 100000 << true;
    QTest::newRow("Work") << u"Work"_s << 1000 << 120 << 2500 << false;
    QTest::newRow("Download") << u"Download"_s << 750 << 160 << 50000 << true;
}

void ProfilesTest::presetOverwritesItsFieldsAlone()
{
    QFETCH(QString, name);
    QFETCH(int, refreshIntervalMs);
    QFETCH(int, maxTableRows);
    QFETCH(int, defaultLimitKbps);
    QFETCH(bool, compactMode);
    AppSettings settings;
    settings.notificationsEnabled = false;
    settings.notify80 = 11;
    settings.notify95 = 12;
    settings.closeToTray = false;
    settings.windowTitleText = u"Mine"_s;
    settings.refreshIntervalMs = 333;
    settings.maxTableRows = 33;
    settings.defaultLimitKbps = 33;
    settings.compactMode = !compactMode;

    AppSettings expected = settings;
    expected.currentProfile = name;
    expected.refreshIntervalMs = refreshIntervalMs;
    expected.maxTableRows = maxTableRows;
    expected.defaultLimitKbps = defaultLimitKbps;
    expected.compactMode = compactMode;

    applyPreset(settings, name);
    QCOMPARE(settings, expected);
}

void ProfilesTest::strictEnablesTheAlertsAtItsOwnLevels()
{
    AppSettings settings;
    settings.notificationsEnabled = false;
    applyPreset(settings, u"Strict"_s);

    AppSettings expected;
    expected.currentProfile = u"Strict"_s;
    expected.refreshIntervalMs = 500;
    expected.maxTableRows = 80;
    expected.defaultLimitKbps = 256;
    expected.compactMode = true;
    expected.notificationsEnabled = true;
    expected.notify80 = 70;
    expected.notify95 = 90;
    QCOMPARE(settings, expected);
}

void ProfilesTest::alertsOfStrictStayUnderAnyOtherProfile_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"Balanced", "Gaming", "Work", "Download"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void ProfilesTest::alertsOfStrictStayUnderAnyOtherProfile()
{
    QFETCH(QString, name);
    AppSettings settings;
    settings.notificationsEnabled = false;
    applyPreset(settings, u"Strict"_s);
    applyPreset(settings, name);
    QCOMPARE(settings.currentProfile, name);
    QCOMPARE(settings.notificationsEnabled, true);
    QCOMPARE(settings.notify80, 70);
    QCOMPARE(settings.notify95, 90);
}

void ProfilesTest::unknownNamesApplyBalanced_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("lower case") << u"gaming"_s;
    QTest::newRow("upper case") << u"STRICT"_s;
    QTest::newRow("blank behind") << u"Work "_s;
    QTest::newRow("empty") << QString();
    QTest::newRow("unheard of") << u"Turbo"_s;
}

void ProfilesTest::unknownNamesApplyBalanced()
{
    QFETCH(QString, name);
    AppSettings settings;
    applyPreset(settings, u"Gaming"_s);
    applyPreset(settings, name);
    AppSettings expected;
    applyPreset(expected, u"Balanced"_s);
    QCOMPARE(settings, expected);
    QCOMPARE(settings.currentProfile, u"Balanced"_s);
}

void ProfilesTest::presetsLieWithinTheBoundsOfTheSettings()
{
    const auto isWithin = [](int value, int AppSettings::*field) {
        const NumberSetting &number = numberSetting(field);
        return number.low <= value && value <= number.high;
    };
    for (const TrafficProfile &profile : trafficProfiles()) {
        QVERIFY(isWithin(profile.refreshIntervalMs, &AppSettings::refreshIntervalMs));
        QVERIFY(isWithin(profile.maxTableRows, &AppSettings::maxTableRows));
        QVERIFY(isWithin(profile.defaultLimitKbps, &AppSettings::defaultLimitKbps));
    }
}

TOVAN_APPLESS_TEST(profiles_test, ProfilesTest)
#include "profiles_test.moc"
