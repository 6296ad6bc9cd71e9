#include "settings/appsettings.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <limits>

using namespace Qt::StringLiterals;

class AppSettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults();
    void keysStandInTheOrderOfTheStore();
    void boundsOfEveryNumber();
    void defaultsLieWithinTheirBounds();
    void textsAreParsedLenientlyAndClamped_data();
    void textsAreParsedLenientlyAndClamped();
    void boundsOfASettingClampATypedText();
};

void AppSettingsTest::defaults()
{
    const AppSettings settings;
    QCOMPARE(settings.monthlyLimitBytes, 107374182400ULL);
    QCOMPARE(settings.renewalDay, 1);
    QCOMPARE(settings.packageUnit, "GB"_L1);
    QCOMPARE(settings.startMinimized, false);
    QCOMPARE(settings.closeToTray, true);
    QCOMPARE(settings.pauseOnLaunch, false);
    QCOMPARE(settings.notificationsEnabled, true);
    QCOMPARE(settings.notify80, 80);
    QCOMPARE(settings.notify95, 95);
    QCOMPARE(settings.compactMode, false);
    QCOMPARE(settings.showSystemRow, true);
    QCOMPARE(settings.rememberRules, true);
    QCOMPARE(settings.miniWidgetEnabled, false);
    QCOMPARE(settings.currentProfile, "Balanced"_L1);
    QCOMPARE(settings.windowTitleText, "Tovan Network Monitor"_L1);
    QCOMPARE(settings.accentColor, "Green"_L1);
    QCOMPARE(settings.refreshIntervalMs, 1000);
    QCOMPARE(settings.maxTableRows, 100);
    QCOMPARE(settings.defaultLimitKbps, 5);
}

void AppSettingsTest::keysStandInTheOrderOfTheStore()
{
    QStringList keys;
    for (const SettingRow &row : settingsTable())
        keys.append(row.key);
    const QStringList expected{
        u"monthlyLimitBytes"_s, u"renewalDay"_s,     u"packageUnit"_s,          u"startMinimized"_s,
        u"closeToTray"_s,       u"pauseOnLaunch"_s,  u"notificationsEnabled"_s, u"notify80"_s,
        u"notify95"_s,          u"compactMode"_s,    u"showSystemRow"_s,        u"rememberRules"_s,
        u"miniWidgetEnabled"_s, u"currentProfile"_s, u"windowTitleText"_s,      u"accentColor"_s,
        u"refreshIntervalMs"_s, u"maxTableRows"_s,   u"defaultLimitKbps"_s,
    };
    QCOMPARE(keys, expected);
}

void AppSettingsTest::boundsOfEveryNumber()
{
    const auto bounds = [](int AppSettings::*field) {
        const NumberSetting &number = numberSetting(field);
        return std::pair(number.low, number.high);
    };
    QCOMPARE(bounds(&AppSettings::renewalDay), std::pair(1, 28));
    QCOMPARE(bounds(&AppSettings::notify80), std::pair(1, 99));
    QCOMPARE(bounds(&AppSettings::notify95), std::pair(2, 100));
    QCOMPARE(bounds(&AppSettings::refreshIntervalMs), std::pair(250, 10000));
    QCOMPARE(bounds(&AppSettings::maxTableRows), std::pair(10, 1000));
    QCOMPARE(bounds(&AppSettings::defaultLimitKbps), std::pair(1, 100000));
}

void AppSettingsTest::defaultsLieWithinTheirBounds()
{
    for (const SettingRow &row : settingsTable()) {
        if (const auto *number = std::get_if<NumberSetting>(&row.setting)) {
            QVERIFY2(number->low <= number->defaultValue, row.key.data());
            QVERIFY2(number->defaultValue <= number->high, row.key.data());
        }
    }
}

void AppSettingsTest::textsAreParsedLenientlyAndClamped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("number");
    QTest::newRow("within") << u"500"_s << 500;
    QTest::newRow("low bound") << u"250"_s << 250;
    QTest::newRow("high bound") << u"10000"_s << 10000;
    QTest::newRow("below") << u"100"_s << 250;
    QTest::newRow("above") << u"20000"_s << 10000;
    QTest::newRow("negative") << u"-500"_s << 250;
    QTest::newRow("plus sign") << u"+500"_s << 500;
    QTest::newRow("blanks around") << u"  500\t"_s << 500;
    QTest::newRow("leading zeros") << u"000500"_s << 500;
    QTest::newRow("empty") << QString() << 250;
    QTest::newRow("letters") << u"abc"_s << 250;
    QTest::newRow("letters after digits") << u"500 ms"_s << 250;
    QTest::newRow("fraction") << u"500.5"_s << 250;
    QTest::newRow("hexadecimal") << u"0x1F4"_s << 250;
    QTest::newRow("thousands separator") << u"5,000"_s << 250;
    QTest::newRow("largest int") << QString::number(std::numeric_limits<int>::max()) << 10000;
    QTest::newRow("too large for an int") << u"4294967796"_s << 250;
    QTest::newRow("too large for 64 bits") << u"99999999999999999999"_s << 250;
    QTest::newRow("NUL") << u"\0"_s << 250;
    QTest::newRow("emoji") << u"😀"_s << 250;
    QTest::newRow("long") << QString(100000, u'9') << 250;
}

void AppSettingsTest::textsAreParsedLenientlyAndClamped()
{
    QFETCH(QString, text);
    QFETCH(int, number);
    QCOMPARE(parseClamped(text, 250, 10000), number);
}

void AppSettingsTest::boundsOfASettingClampATypedText()
{
    QCOMPARE(parseClamped(u"31"_s, &AppSettings::renewalDay), 28);
    QCOMPARE(parseClamped(u"0"_s, &AppSettings::renewalDay), 1);
    QCOMPARE(parseClamped(u"100"_s, &AppSettings::refreshIntervalMs), 250);
    QCOMPARE(parseClamped(u"5000"_s, &AppSettings::maxTableRows), 1000);
}

TOVAN_APPLESS_TEST(appsettings_test, AppSettingsTest)
#include "appsettings_test.moc"
