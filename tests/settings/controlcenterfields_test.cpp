#include "tests/settings/controlcenterfixture.h"

using namespace Qt::StringLiterals;

/// What applying makes of what was typed and chosen.
class ControlCenterFieldsTest : public QObject, private ControlCenterFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }
    void cleanup() { clear(); }

    void editsTakeEffectOnlyWhenApplied();
    void applyStoresEveryControl();
    void numbersAreParsedLenientlyAndShownAsStored_data();
    void numbersAreParsedLenientlyAndShownAsStored();
    void theCriticalLevelLiesAboveTheWarningLevel_data();
    void theCriticalLevelLiesAboveTheWarningLevel();
    void allowanceIsStoredInTheUnitsBytes_data();
    void allowanceIsStoredInTheUnitsBytes();
    void anUneditedPlanInMegabytesIsAppliedAsOneMegabyte();
    void titleIsTrimmedForTheWindowAndStaysAsTypedInTheField();
    void aBlankTitleIsTheProgramsName();
    void anyTextInAnyFieldIsTaken_data();
    void anyTextInAnyFieldIsTaken();
};

void ControlCenterFieldsTest::editsTakeEffectOnlyWhenApplied()
{
    open();
    type(u"Refresh (ms)"_s, u"5000"_s);
    type(u"Title"_s, u"Mine"_s);
    check(u"Compact rows"_s, true);
    m_fixture->tick();
    QCOMPARE(sampleTimer(m_fixture->window())->interval(), 1000);
    QCOMPARE(m_fixture->window().windowTitle(), u"Tovan Network Monitor"_s);
    QCOMPARE(WindowFixture::stored(u"refreshIntervalMs"_s).toInt(), 1000);
    QCOMPARE(WindowFixture::stored(u"compactMode"_s).toBool(), false);
    QCOMPARE(shown(u"Refresh (ms)"_s), u"5000"_s);
}

void ControlCenterFieldsTest::applyStoresEveryControl()
{
    open();
    type(u"Allowance"_s, u"500"_s);
    type(u"Reset day"_s, u"15"_s);
    choose(u"Unit"_s, u"MB"_s);
    check(u"Launch minimized"_s, true);
    check(u"Close to tray"_s, false);
    check(u"Start paused"_s, true);
    check(u"Show mini monitor"_s, true);
    check(u"Enable alerts"_s, false);
    type(u"Warning %"_s, u"60"_s);
    type(u"Critical %"_s, u"70"_s);
    check(u"Compact rows"_s, true);
    check(u"Show This PC summary row"_s, false);
    check(u"Remember rules"_s, false);
    type(u"Title"_s, u"Mine"_s);
    choose(u"Accent"_s, u"Violet"_s);
    type(u"Refresh (ms)"_s, u"500"_s);
    type(u"Max apps"_s, u"20"_s);
    type(u"Limit (KB/s)"_s, u"7"_s);
    apply();

    const QList<std::pair<QString, QVariant>> expected{
        {u"monthlyLimitBytes"_s, 524288000ULL},
        {u"renewalDay"_s, 15},
        {u"packageUnit"_s, u"MB"_s},
        {u"startMinimized"_s, true},
        {u"closeToTray"_s, false},
        {u"pauseOnLaunch"_s, true},
        {u"notificationsEnabled"_s, false},
        {u"notify80"_s, 60},
        {u"notify95"_s, 70},
        {u"compactMode"_s, true},
        {u"showSystemRow"_s, false},
        {u"rememberRules"_s, false},
        {u"miniWidgetEnabled"_s, true},
        {u"currentProfile"_s, u"Balanced"_s},
        {u"windowTitleText"_s, u"Mine"_s},
        {u"accentColor"_s, u"Violet"_s},
        {u"refreshIntervalMs"_s, 500},
        {u"maxTableRows"_s, 20},
        {u"defaultLimitKbps"_s, 7},
    };
    for (const auto &[key, value] : expected)
        QCOMPARE(WindowFixture::stored(key).toString(), value.toString());
}

void ControlCenterFieldsTest::numbersAreParsedLenientlyAndShownAsStored_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("number");
    const auto row
        = [](const char *label, const QString &key, const char *typed, const char *number) {
              QTest::addRow("%s: \"%s\"", label, typed)
                  << QString::fromUtf8(label) << QString::fromUtf8(typed) << key
                  << QString::fromUtf8(number);
          };
    row("Reset day", u"renewalDay"_s, "0", "1");
    row("Reset day", u"renewalDay"_s, "1", "1");
    row("Reset day", u"renewalDay"_s, "28", "28");
    row("Reset day", u"renewalDay"_s, "29", "28");
    row("Reset day", u"renewalDay"_s, "-3", "1");
    row("Reset day", u"renewalDay"_s, "first", "1");
    row("Reset day", u"renewalDay"_s, " 9 ", "9");
    row("Reset day", u"renewalDay"_s, "007", "7");
    row("Reset day", u"renewalDay"_s, "1.5", "1");
    row("Reset day", u"renewalDay"_s, "4294967297", "1");
    row("Warning %", u"notify80"_s, "0", "1");
    row("Warning %", u"notify80"_s, "99", "99");
    row("Warning %", u"notify80"_s, "100", "99");
    row("Critical %", u"notify95"_s, "500", "100");
    row("Refresh (ms)", u"refreshIntervalMs"_s, "100", "250");
    row("Refresh (ms)", u"refreshIntervalMs"_s, "250", "250");
    row("Refresh (ms)", u"refreshIntervalMs"_s, "10001", "10000");
    row("Refresh (ms)", u"refreshIntervalMs"_s, "", "250");
    row("Max apps", u"maxTableRows"_s, "9", "10");
    row("Max apps", u"maxTableRows"_s, "1001", "1000");
    row("Limit (KB/s)", u"defaultLimitKbps"_s, "0", "1");
    row("Limit (KB/s)", u"defaultLimitKbps"_s, "100001", "100000");
}

void ControlCenterFieldsTest::numbersAreParsedLenientlyAndShownAsStored()
{
    QFETCH(QString, label);
    QFETCH(QString, typed);
    QFETCH(QString, key);
    QFETCH(QString, number);
    open();
    type(label, typed);
    apply();
    QCOMPARE(WindowFixture::stored(key).toString(), number);
    QCOMPARE(shown(label), number);
}

void ControlCenterFieldsTest::theCriticalLevelLiesAboveTheWarningLevel_data()
{
    QTest::addColumn<QString>("warning");
    QTest::addColumn<QString>("critical");
    QTest::addColumn<int>("storedWarning");
    QTest::addColumn<int>("storedCritical");
    QTest::newRow("critical below warning") << u"95"_s << u"90"_s << 95 << 96;
    QTest::newRow("both equal") << u"50"_s << u"50"_s << 50 << 51;
    QTest::newRow("highest warning") << u"99"_s << u"1"_s << 99 << 100;
    QTest::newRow("lowest warning") << u"0"_s << u"0"_s << 1 << 2;
    QTest::newRow("in order") << u"10"_s << u"20"_s << 10 << 20;
}

void ControlCenterFieldsTest::theCriticalLevelLiesAboveTheWarningLevel()
{
    QFETCH(QString, warning);
    QFETCH(QString, critical);
    QFETCH(int, storedWarning);
    QFETCH(int, storedCritical);
    open();
    type(u"Warning %"_s, warning);
    type(u"Critical %"_s, critical);
    apply();
    QCOMPARE(WindowFixture::stored(u"notify80"_s).toInt(), storedWarning);
    QCOMPARE(WindowFixture::stored(u"notify95"_s).toInt(), storedCritical);
    QCOMPARE(shown(u"Warning %"_s), QString::number(storedWarning));
    QCOMPARE(shown(u"Critical %"_s), QString::number(storedCritical));
}

void ControlCenterFieldsTest::allowanceIsStoredInTheUnitsBytes_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<quint64>("bytes");
    QTest::addColumn<QString>("shownAmount");
    QTest::newRow("letters") << u"abc"_s << u"GB"_s << quint64(1073741824) << u"1"_s;
    QTest::newRow("above") << u"250000"_s << u"GB"_s << quint64(107374182400000) << u"100000"_s;
    QTest::newRow("megabytes") << u"500"_s << u"MB"_s << quint64(524288000) << u"500"_s;
    QTest::newRow("zero megabytes") << u"0"_s << u"MB"_s << quint64(1048576) << u"1"_s;
    QTest::newRow("too large for 64 bits")
        << u"18446744073709551616"_s << u"GB"_s << quint64(1073741824) << u"1"_s;
}

void ControlCenterFieldsTest::allowanceIsStoredInTheUnitsBytes()
{
    QFETCH(QString, typed);
    QFETCH(QString, unit);
    QFETCH(quint64, bytes);
    QFETCH(QString, shownAmount);
    open();
    type(u"Allowance"_s, typed);
    choose(u"Unit"_s, unit);
    apply();
    QCOMPARE(WindowFixture::stored(u"monthlyLimitBytes"_s).toULongLong(), bytes);
    QCOMPARE(shown(u"Allowance"_s), shownAmount);
}

void ControlCenterFieldsTest::anUneditedPlanInMegabytesIsAppliedAsOneMegabyte()
{
    WindowFixture::store(u"monthlyLimitBytes"_s, 524288000ULL);
    WindowFixture::store(u"packageUnit"_s, u"MB"_s);
    open();
    apply();
    QCOMPARE(WindowFixture::stored(u"monthlyLimitBytes"_s).toULongLong(), 1048576ULL);
}

void ControlCenterFieldsTest::titleIsTrimmedForTheWindowAndStaysAsTypedInTheField()
{
    open();
    type(u"Title"_s, u"  My <b>monitor</b> & co  "_s);
    apply();
    QCOMPARE(m_fixture->window().windowTitle(), u"My <b>monitor</b> & co"_s);
    QCOMPARE(m_fixture->find<QLabel>("titleBarText")->text(), u"My <b>monitor</b> & co"_s);
    QCOMPARE(WindowFixture::stored(u"windowTitleText"_s), u"My <b>monitor</b> & co"_s);
    QCOMPARE(shown(u"Title"_s), u"  My <b>monitor</b> & co  "_s);
}

void ControlCenterFieldsTest::aBlankTitleIsTheProgramsName()
{
    WindowFixture::store(u"windowTitleText"_s, u"Mine"_s);
    open();
    type(u"Title"_s, u"   "_s);
    apply();
    QCOMPARE(m_fixture->window().windowTitle(), u"Tovan Network Monitor"_s);
    QCOMPARE(WindowFixture::stored(u"windowTitleText"_s), u"Tovan Network Monitor"_s);
    QCOMPARE(shown(u"Title"_s), u"   "_s);
}

void ControlCenterFieldsTest::anyTextInAnyFieldIsTaken_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("emoji") << u"😀👩‍👩‍👧🇩🇪"_s;
    QTest::newRow("right to left") << u"\u202eمراقب الشبكة"_s;
    QTest::newRow("embedded NUL") << u"\0name\0"_s;
    QTest::newRow("line feeds") << u"5\n6\r\n7"_s;
    QTest::newRow("placeholders") << u"%1 %2 %n %L1 %s"_s;
    QTest::newRow("mark-up") << u"<img src=file:///etc/passwd><script>&amp;"_s;
    QTest::newRow("exponent") << u"1e9"_s;
    QTest::newRow("infinite") << u"inf"_s;
    QTest::newRow("Arabic digits") << u"١٢٣"_s;
    QTest::newRow("digits without end") << QString(30000, u'9');
    QTest::newRow("minus signs") << u"----5"_s;
}

void ControlCenterFieldsTest::anyTextInAnyFieldIsTaken()
{
    QFETCH(QString, text);
    const QStringList numbers{u"Allowance"_s,    u"Reset day"_s, u"Warning %"_s,   u"Critical %"_s,
                              u"Refresh (ms)"_s, u"Max apps"_s,  u"Limit (KB/s)"_s};
    open();
    for (const QString &label : numbers)
        type(label, text);
    type(u"Title"_s, text);
    const QString typedTitle = shown(u"Title"_s);
    apply();

    const QStringList lowest{u"1"_s, u"1"_s, u"1"_s, u"2"_s, u"250"_s, u"10"_s, u"1"_s};
    QStringList now;
    for (const QString &label : numbers)
        now.append(shown(label));
    QCOMPARE(now, lowest);
    QCOMPARE(WindowFixture::stored(u"windowTitleText"_s).toString(), typedTitle.trimmed());

    m_fixture->close();
    m_fixture->open();
    QCOMPARE(shown(u"Title"_s), typedTitle.trimmed());
    QCOMPARE(m_fixture->find<QLabel>("titleBarText")->text(), typedTitle.trimmed());
}

TOVAN_WINDOW_TEST(controlcenterfields_test, ControlCenterFieldsTest)
#include "controlcenterfields_test.moc"
