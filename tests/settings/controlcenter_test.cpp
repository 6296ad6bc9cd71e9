#include "tests/support/windowfixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollArea>

using namespace Qt::StringLiterals;

namespace {

constexpr qulonglong gigabyte = 1024ULL * 1024 * 1024;

QTimer *sampleTimer(const QMainWindow &window)
{
    const auto timers = window.findChildren<QTimer *>(Qt::FindDirectChildrenOnly);
    for (QTimer *timer : timers) {
        if (!timer->isSingleShot())
            return timer;
    }
    qFatal("the window has no sampling timer");
}

QStringList texts(const QList<QLabel *> &labels)
{
    QStringList list;
    for (const QLabel *label : labels)
        list.append(label->text());
    return list;
}

} // namespace

/// The Control Center of the real window, edited and applied as a user does.
class ControlCenterTest : public QObject
{
    Q_OBJECT

    void open();
    void type(const QString &label, const QString &text);
    QString shown(const QString &label) { return m_fixture->setting<QLineEdit>(label)->text(); }
    void choose(const QString &label, const QString &text);
    void check(const QString &label, bool checked);
    void apply() { WindowFixture::click(m_fixture->button(u"Apply changes"_s)); }
    /// Whether what was done since was saved.
    bool wasSaved() const { return QFile::exists(WindowFixture::storePath()); }
    void forgetSaves() const { QFile::remove(WindowFixture::storePath()); }

    std::unique_ptr<WindowFixture> m_fixture;

private Q_SLOTS:
    void init();
    void cleanup();

    void thePageIsBuiltAsItsSheetNamesIt();
    void panelsStandInTheirGrid();
    void panelsListTheirControlsInOrder();
    void controlsShowTheStoredSettings();
    void aStoredChoiceThatIsNotOfferedLeavesTheFirstEntry();
    void theAllowanceStartsInWholeGigabytesWhateverItsUnit();

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

    void theTimerRunsAtTheNewIntervalAtOnce();
    void compactRowsChangeTheTableAtOnce();
    void theSystemRowIsHiddenAtOnce();
    void startPausedPausesAtOnceAndNeverResumes();
    void theMiniMonitorFollowsItsBox();
    void theAccentChangesNoColour();
    void theSummaryTellsThePlan();
    void theProfileBoxAppliesAtOnce();
    void applyTakesOverTheShownProfileWithoutItsPreset();

    void clearingRulesForgetsThemWithoutAWord();
    void clearingNoRulesStillSavesAndRefreshes();
    void resettingUsageClearsDayMonthAndSession();
    void resettingUsageDoesNotAllowTheAlertAgain();

    void textsFromTheStoreAreNoMarkUp();
    void longTextsDoNotWidenTheWindow();
};

void ControlCenterTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void ControlCenterTest::cleanup()
{
    m_fixture.reset();
}

void ControlCenterTest::open()
{
    m_fixture->open();
    const auto buttons = m_fixture->window().findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->property("class") == u"nav"_s && button->text().endsWith(u"Settings"_s))
            WindowFixture::click(button);
    }
    QVERIFY(m_fixture->find<QScrollArea>("settingsScroll")->isVisible());
}

void ControlCenterTest::type(const QString &label, const QString &text)
{
    auto *edit = m_fixture->setting<QLineEdit>(label);
    edit->selectAll();
    edit->insert(text);
}

void ControlCenterTest::choose(const QString &label, const QString &text)
{
    auto *box = m_fixture->setting<QComboBox>(label);
    QTest::keyClick(box, text.front().toLatin1());
    QCOMPARE(box->currentText(), text);
}

void ControlCenterTest::check(const QString &label, bool checked)
{
    auto *box = m_fixture->setting<QCheckBox>(label);
    if (box->isChecked() != checked)
        WindowFixture::click(box);
    QCOMPARE(box->isChecked(), checked);
}

void ControlCenterTest::thePageIsBuiltAsItsSheetNamesIt()
{
    open();
    const auto *scroll = m_fixture->find<QScrollArea>("settingsScroll");
    QVERIFY(scroll->widgetResizable());
    QCOMPARE(scroll->frameShape(), QFrame::NoFrame);
    QCOMPARE(scroll->widget()->objectName(), u"page"_s);
    QCOMPARE(scroll->widget()->minimumWidth(), 900);
    QCOMPARE(scroll->widget()->layout()->contentsMargins(), QMargins(34, 24, 34, 28));
    QCOMPARE(texts(scroll->findChildren<QLabel *>(u"title"_s)), QStringList{u"Control Center"_s});
    QCOMPARE(scroll->findChildren<QLabel *>(u"subtitle"_s).first()->text(),
             u"Clean settings for plan usage, alerts, startup, and the monitoring table."_s);
    const auto *badge = scroll->findChild<QFrame *>(u"badge"_s);
    QVERIFY(badge);
    QCOMPARE(texts(badge->findChildren<QLabel *>(u"badgeText"_s)), QStringList{u"Saved locally"_s});
    QCOMPARE(m_fixture->button(u"Apply changes"_s)->objectName(), u"save"_s);
    QCOMPARE(m_fixture->button(u"Reset usage counters"_s)->objectName(), u"actionButton"_s);
    QCOMPARE(m_fixture->button(u"Clear rule indicators"_s)->objectName(), u"actionButton"_s);
}

void ControlCenterTest::panelsStandInTheirGrid()
{
    open();
    const auto *scroll = m_fixture->find<QScrollArea>("settingsScroll");
    const auto panels = scroll->findChildren<QFrame *>(u"panel"_s);
    QCOMPARE(panels.size(), 6);
    const auto *grid = qobject_cast<QGridLayout *>(scroll->widget()->layout()->itemAt(1)->layout());
    QVERIFY(grid);
    QCOMPARE(grid->horizontalSpacing(), 18);
    QCOMPARE(grid->verticalSpacing(), 18);
    QCOMPARE(grid->columnStretch(0), 3);
    QCOMPARE(grid->columnStretch(1), 2);
    const auto titleAt = [grid](int row, int column) {
        const QWidget *panel = grid->itemAtPosition(row, column)->widget();
        return panel->findChild<QLabel *>(u"panelTitle"_s)->text();
    };
    QCOMPARE(titleAt(0, 0), u"Usage Plan"_s);
    QCOMPARE(titleAt(0, 1), u"Startup & Tray"_s);
    QCOMPARE(titleAt(1, 0), u"Usage Alerts"_s);
    QCOMPARE(titleAt(1, 1), u"Interface & Data"_s);
    QCOMPARE(titleAt(2, 0), u"Monitoring Engine"_s);
    QCOMPARE(grid->itemAtPosition(2, 1), grid->itemAtPosition(2, 0));

    const auto *panel = qobject_cast<QGridLayout *>(grid->itemAtPosition(0, 0)->widget()->layout());
    QCOMPARE(panel->contentsMargins(), QMargins(24, 20, 24, 20));
    QCOMPARE(panel->horizontalSpacing(), 14);
    QCOMPARE(panel->verticalSpacing(), 12);
    QCOMPARE(panel->columnMinimumWidth(0), 92);
    QCOMPARE(panel->columnStretch(0), 0);
    QCOMPARE(panel->columnStretch(1), 1);

    const auto *actions = qobject_cast<QGridLayout *>(panels.last()->layout());
    QCOMPARE(actions->contentsMargins(), QMargins(28, 18, 28, 18));
    QCOMPARE(actions->horizontalSpacing(), 12);
    QCOMPARE(actions->itemAtPosition(0, 2)->widget(),
             m_fixture->button(u"Clear rule indicators"_s));
    QCOMPARE(actions->itemAtPosition(1, 0), actions->itemAtPosition(1, 2));
}

void ControlCenterTest::panelsListTheirControlsInOrder()
{
    open();
    const auto panels
        = m_fixture->find<QScrollArea>("settingsScroll")->findChildren<QFrame *>(u"panel"_s);
    const auto rows = [&panels](qsizetype panel) {
        const auto *grid = qobject_cast<QGridLayout *>(panels.at(panel)->layout());
        QStringList list;
        for (int row = 1; grid->itemAtPosition(row, 0); ++row) {
            const QWidget *first = grid->itemAtPosition(row, 0)->widget();
            const QWidget *second = grid->itemAtPosition(row, 1)->widget();
            if (const auto *box = qobject_cast<const QCheckBox *>(first))
                list.append(box->text() + (second == first ? u" []"_s : u" [short]"_s));
            else if (const auto *label = qobject_cast<const QLabel *>(first))
                list.append(label->text() + u' '
                            + QString::fromLatin1(second->metaObject()->className()));
        }
        return list;
    };
    QCOMPARE(rows(0),
             (QStringList{u"Profile QComboBox"_s, u"Allowance QLineEdit"_s,
                          u"Reset day QLineEdit"_s, u"Unit QComboBox"_s}));
    QCOMPARE(rows(1),
             (QStringList{u"Launch minimized []"_s, u"Close to tray []"_s, u"Start paused []"_s,
                          u"Show mini monitor []"_s}));
    QCOMPARE(
        rows(2),
        (QStringList{u"Enable alerts []"_s, u"Warning % QLineEdit"_s, u"Critical % QLineEdit"_s}));
    QCOMPARE(rows(3),
             (QStringList{u"Compact rows []"_s, u"Show This PC summary row []"_s,
                          u"Remember rules []"_s, u"Title QLineEdit"_s, u"Accent QComboBox"_s}));
    QCOMPARE(rows(4),
             (QStringList{u"Refresh (ms) QLineEdit"_s, u"Max apps QLineEdit"_s,
                          u"Limit (KB/s) QLineEdit"_s}));

    const auto items = [this](const QString &label) {
        const auto *box = m_fixture->setting<QComboBox>(label);
        QStringList list;
        for (int i = 0; i < box->count(); ++i)
            list.append(box->itemText(i));
        return list;
    };
    QCOMPARE(items(u"Profile"_s),
             (QStringList{u"Balanced"_s, u"Gaming"_s, u"Work"_s, u"Download"_s, u"Strict"_s}));
    QCOMPARE(items(u"Unit"_s), (QStringList{u"GB"_s, u"MB"_s}));
    QCOMPARE(items(u"Accent"_s), (QStringList{u"Green"_s, u"Blue"_s, u"Violet"_s, u"Coral"_s}));
}

void ControlCenterTest::controlsShowTheStoredSettings()
{
    WindowFixture::store(u"monthlyLimitBytes"_s, 250 * gigabyte);
    WindowFixture::store(u"renewalDay"_s, 17);
    WindowFixture::store(u"packageUnit"_s, u"MB"_s);
    WindowFixture::store(u"closeToTray"_s, false);
    WindowFixture::store(u"notificationsEnabled"_s, false);
    WindowFixture::store(u"notify80"_s, 55);
    WindowFixture::store(u"notify95"_s, 66);
    WindowFixture::store(u"compactMode"_s, true);
    WindowFixture::store(u"showSystemRow"_s, false);
    WindowFixture::store(u"rememberRules"_s, false);
    WindowFixture::store(u"currentProfile"_s, u"Work"_s);
    WindowFixture::store(u"windowTitleText"_s, u"My monitor"_s);
    WindowFixture::store(u"accentColor"_s, u"Coral"_s);
    WindowFixture::store(u"refreshIntervalMs"_s, 2000);
    WindowFixture::store(u"maxTableRows"_s, 33);
    WindowFixture::store(u"defaultLimitKbps"_s, 44);
    open();

    QCOMPARE(m_fixture->setting<QComboBox>(u"Profile"_s)->currentText(), u"Work"_s);
    QCOMPARE(shown(u"Allowance"_s), u"250"_s);
    QCOMPARE(shown(u"Reset day"_s), u"17"_s);
    QCOMPARE(m_fixture->setting<QComboBox>(u"Unit"_s)->currentText(), u"MB"_s);
    QVERIFY(!m_fixture->setting<QCheckBox>(u"Launch minimized"_s)->isChecked());
    QVERIFY(!m_fixture->setting<QCheckBox>(u"Close to tray"_s)->isChecked());
    QVERIFY(!m_fixture->setting<QCheckBox>(u"Enable alerts"_s)->isChecked());
    QCOMPARE(shown(u"Warning %"_s), u"55"_s);
    QCOMPARE(shown(u"Critical %"_s), u"66"_s);
    QVERIFY(m_fixture->setting<QCheckBox>(u"Compact rows"_s)->isChecked());
    QVERIFY(!m_fixture->setting<QCheckBox>(u"Show This PC summary row"_s)->isChecked());
    QVERIFY(!m_fixture->setting<QCheckBox>(u"Remember rules"_s)->isChecked());
    QCOMPARE(shown(u"Title"_s), u"My monitor"_s);
    QCOMPARE(m_fixture->setting<QComboBox>(u"Accent"_s)->currentText(), u"Coral"_s);
    QCOMPARE(shown(u"Refresh (ms)"_s), u"2000"_s);
    QCOMPARE(shown(u"Max apps"_s), u"33"_s);
    QCOMPARE(shown(u"Limit (KB/s)"_s), u"44"_s);
}

void ControlCenterTest::aStoredChoiceThatIsNotOfferedLeavesTheFirstEntry()
{
    WindowFixture::store(u"currentProfile"_s, u"Turbo"_s);
    WindowFixture::store(u"packageUnit"_s, u"TB"_s);
    WindowFixture::store(u"accentColor"_s, u"Pink"_s);
    open();
    QCOMPARE(m_fixture->setting<QComboBox>(u"Profile"_s)->currentText(), u"Balanced"_s);
    QCOMPARE(m_fixture->setting<QComboBox>(u"Unit"_s)->currentText(), u"GB"_s);
    QCOMPARE(m_fixture->setting<QComboBox>(u"Accent"_s)->currentText(), u"Green"_s);

    m_fixture->tick();
    QCOMPARE(WindowFixture::stored(u"currentProfile"_s), u"Turbo"_s);
    QCOMPARE(WindowFixture::stored(u"packageUnit"_s), u"TB"_s);
    QCOMPARE(WindowFixture::stored(u"accentColor"_s), u"Pink"_s);

    apply();
    QCOMPARE(WindowFixture::stored(u"currentProfile"_s), u"Balanced"_s);
    QCOMPARE(WindowFixture::stored(u"packageUnit"_s), u"GB"_s);
    QCOMPARE(WindowFixture::stored(u"accentColor"_s), u"Green"_s);
}

void ControlCenterTest::theAllowanceStartsInWholeGigabytesWhateverItsUnit()
{
    WindowFixture::store(u"monthlyLimitBytes"_s, 524288000ULL);
    WindowFixture::store(u"packageUnit"_s, u"MB"_s);
    open();
    QCOMPARE(shown(u"Allowance"_s), u"0"_s);
}

void ControlCenterTest::editsTakeEffectOnlyWhenApplied()
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

void ControlCenterTest::applyStoresEveryControl()
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

void ControlCenterTest::numbersAreParsedLenientlyAndShownAsStored_data()
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

void ControlCenterTest::numbersAreParsedLenientlyAndShownAsStored()
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

void ControlCenterTest::theCriticalLevelLiesAboveTheWarningLevel_data()
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

void ControlCenterTest::theCriticalLevelLiesAboveTheWarningLevel()
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

void ControlCenterTest::allowanceIsStoredInTheUnitsBytes_data()
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

void ControlCenterTest::allowanceIsStoredInTheUnitsBytes()
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

void ControlCenterTest::anUneditedPlanInMegabytesIsAppliedAsOneMegabyte()
{
    WindowFixture::store(u"monthlyLimitBytes"_s, 524288000ULL);
    WindowFixture::store(u"packageUnit"_s, u"MB"_s);
    open();
    apply();
    QCOMPARE(WindowFixture::stored(u"monthlyLimitBytes"_s).toULongLong(), 1048576ULL);
}

void ControlCenterTest::titleIsTrimmedForTheWindowAndStaysAsTypedInTheField()
{
    open();
    type(u"Title"_s, u"  My <b>monitor</b> & co  "_s);
    apply();
    QCOMPARE(m_fixture->window().windowTitle(), u"My <b>monitor</b> & co"_s);
    QCOMPARE(m_fixture->find<QLabel>("titleBarText")->text(), u"My <b>monitor</b> & co"_s);
    QCOMPARE(WindowFixture::stored(u"windowTitleText"_s), u"My <b>monitor</b> & co"_s);
    QCOMPARE(shown(u"Title"_s), u"  My <b>monitor</b> & co  "_s);
}

void ControlCenterTest::aBlankTitleIsTheProgramsName()
{
    WindowFixture::store(u"windowTitleText"_s, u"Mine"_s);
    open();
    type(u"Title"_s, u"   "_s);
    apply();
    QCOMPARE(m_fixture->window().windowTitle(), u"Tovan Network Monitor"_s);
    QCOMPARE(WindowFixture::stored(u"windowTitleText"_s), u"Tovan Network Monitor"_s);
    QCOMPARE(shown(u"Title"_s), u"   "_s);
}

void ControlCenterTest::anyTextInAnyFieldIsTaken_data()
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

void ControlCenterTest::anyTextInAnyFieldIsTaken()
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

void ControlCenterTest::theTimerRunsAtTheNewIntervalAtOnce()
{
    open();
    type(u"Refresh (ms)"_s, u"100"_s);
    apply();
    const QTimer *timer = sampleTimer(m_fixture->window());
    QCOMPARE(timer->interval(), 250);
    QVERIFY(timer->isActive());
}

void ControlCenterTest::compactRowsChangeTheTableAtOnce()
{
    open();
    const QHeaderView *rows = m_fixture->appsTable()->verticalHeader();
    QCOMPARE(rows->defaultSectionSize(), 30);
    check(u"Compact rows"_s, true);
    apply();
    QCOMPARE(rows->defaultSectionSize(), 22);
    check(u"Compact rows"_s, false);
    apply();
    QCOMPARE(rows->defaultSectionSize(), 30);
}

void ControlCenterTest::theSystemRowIsHiddenAtOnce()
{
    m_fixture->system().addProcess(10, u"curl"_s, 1);
    open();
    m_fixture->tick();
    QVERIFY(WindowFixture::rowOf(m_fixture->appsTable(), u"This PC"_s) >= 0);
    check(u"Show This PC summary row"_s, false);
    apply();
    QCOMPARE(WindowFixture::rowOf(m_fixture->appsTable(), u"This PC"_s), -1);
}

void ControlCenterTest::startPausedPausesAtOnceAndNeverResumes()
{
    open();
    auto *pauseButton = m_fixture->button(u"Pause"_s);
    check(u"Start paused"_s, true);
    apply();
    QCOMPARE(pauseButton->text(), u"Resume"_s);
    forgetSaves();
    m_fixture->tick();
    QVERIFY2(!wasSaved(), "a paused tick saved");

    check(u"Start paused"_s, false);
    apply();
    QCOMPARE(pauseButton->text(), u"Resume"_s);
    forgetSaves();
    m_fixture->tick();
    QVERIFY2(!wasSaved(), "a paused tick saved");
}

void ControlCenterTest::theMiniMonitorFollowsItsBox()
{
    open();
    const auto miniMonitor = [] {
        const auto widgets = QApplication::topLevelWidgets();
        const auto found = std::ranges::find_if(
            widgets, [](QWidget *widget) { return widget->findChild<QFrame *>(u"miniShell"_s); });
        return found == widgets.end() ? nullptr : *found;
    };
    QVERIFY(miniMonitor());
    QVERIFY(!miniMonitor()->isVisible());
    check(u"Show mini monitor"_s, true);
    QVERIFY(!miniMonitor()->isVisible());
    apply();
    QVERIFY(miniMonitor()->isVisible());

    m_fixture->menuAction(u"Toggle Mini monitor"_s)->trigger();
    QVERIFY(!miniMonitor()->isVisible());
    QVERIFY(!m_fixture->setting<QCheckBox>(u"Show mini monitor"_s)->isChecked());
    QCOMPARE(WindowFixture::stored(u"miniWidgetEnabled"_s).toBool(), false);
}

void ControlCenterTest::theAccentChangesNoColour()
{
    open();
    const QString sheet = m_fixture->window().styleSheet();
    choose(u"Accent"_s, u"Coral"_s);
    apply();
    QCOMPARE(m_fixture->window().styleSheet(), sheet);
    m_fixture->close();
    m_fixture->open();
    QCOMPARE(m_fixture->window().styleSheet(), sheet);
    QCOMPARE(m_fixture->setting<QComboBox>(u"Accent"_s)->currentText(), u"Coral"_s);
}

void ControlCenterTest::theSummaryTellsThePlan()
{
    open();
    const QLabel *summary = m_fixture->labelStarting(u"Active profile: "_s);
    QCOMPARE(summary->objectName(), u"subtitle"_s);
    QCOMPARE(summary->text(),
             u"Active profile: Balanced / 100.0 GB allowance / resets on day 1 / alert levels 80% "
             "and 95%"_s);
    type(u"Allowance"_s, u"500"_s);
    choose(u"Unit"_s, u"MB"_s);
    type(u"Reset day"_s, u"15"_s);
    type(u"Warning %"_s, u"60"_s);
    type(u"Critical %"_s, u"61"_s);
    apply();
    QCOMPARE(summary->text(),
             u"Active profile: Balanced / 500.0 MB allowance / resets on day 15 / alert levels 60% "
             "and 61%"_s);
}

void ControlCenterTest::theProfileBoxAppliesAtOnce()
{
    open();
    choose(u"Profile"_s, u"Gaming"_s);
    QCOMPARE(WindowFixture::stored(u"currentProfile"_s), u"Gaming"_s);
    QCOMPARE(sampleTimer(m_fixture->window())->interval(), 500);
    QCOMPARE(m_fixture->toast(), u"Profile applied: Gaming"_s);
    QVERIFY(m_fixture->labelStarting(u"Active profile: Gaming / "_s));
}

void ControlCenterTest::applyTakesOverTheShownProfileWithoutItsPreset()
{
    WindowFixture::store(u"currentProfile"_s, u"Turbo"_s);
    WindowFixture::store(u"refreshIntervalMs"_s, 3000);
    open();
    apply();
    QCOMPARE(WindowFixture::stored(u"currentProfile"_s), u"Balanced"_s);
    QCOMPARE(WindowFixture::stored(u"refreshIntervalMs"_s).toInt(), 3000);
}

void ControlCenterTest::clearingRulesForgetsThemWithoutAWord()
{
    WindowFixture::store(u"rules/size"_s, 1);
    WindowFixture::store(u"rules/1/app"_s, u"curl"_s);
    WindowFixture::store(u"rules/1/blocked"_s, true);
    open();
    m_fixture->tick();
    QCOMPARE(WindowFixture::stored(u"rules/size"_s).toInt(), 1);
    QCOMPARE(WindowFixture::stored(u"rules/1/app"_s), u"curl"_s);

    WindowFixture::click(m_fixture->button(u"Clear rule indicators"_s));
    QCOMPARE(WindowFixture::stored(u"rules/size"_s).toInt(), 0);
    QVERIFY(!WindowFixture::stored(u"rules/1/app"_s).isValid());
    QCOMPARE(m_fixture->toast(), QString());
    QVERIFY(m_fixture->labelStarting(u"Applications: 0    Today: "_s));
}

void ControlCenterTest::clearingNoRulesStillSavesAndRefreshes()
{
    open();
    QLabel *status = m_fixture->labelStarting(u"Ready"_s);
    forgetSaves();
    WindowFixture::click(m_fixture->button(u"Clear rule indicators"_s));
    QVERIFY(wasSaved());
    QVERIFY(status->text().startsWith(u"Applications: "_s));
}

void ControlCenterTest::resettingUsageClearsDayMonthAndSession()
{
    open();
    m_fixture->system().setCounters(3 * gigabyte, 1 * gigabyte);
    m_fixture->tick();
    QCOMPARE(WindowFixture::stored(u"todayBytes"_s).toULongLong(), 4 * gigabyte);
    QCOMPARE(WindowFixture::stored(u"monthBytes"_s).toULongLong(), 4 * gigabyte);
    const QString day = WindowFixture::stored(u"dayKey"_s).toString();
    const QString month = WindowFixture::stored(u"monthKey"_s).toString();

    WindowFixture::click(m_fixture->button(u"Reset usage counters"_s));
    QCOMPARE(WindowFixture::stored(u"todayBytes"_s).toULongLong(), 0ULL);
    QCOMPARE(WindowFixture::stored(u"monthBytes"_s).toULongLong(), 0ULL);
    QCOMPARE(WindowFixture::stored(u"dayKey"_s), day);
    QCOMPARE(WindowFixture::stored(u"monthKey"_s), month);
    QCOMPARE(m_fixture->toast(), u"Session counters reset"_s);
    QVERIFY(m_fixture->labelStarting(u"Session: 0 B / Month: 0 B (0%)"_s));
    QVERIFY(m_fixture->labelStarting(u"Peak: 0 B/s down | 0 B/s up"_s));
}

void ControlCenterTest::resettingUsageDoesNotAllowTheAlertAgain()
{
    open();
    m_fixture->system().setCounters(85 * gigabyte, 0);
    m_fixture->tick();
    QCOMPARE(m_fixture->toast(), u"Warning usage: 80% reached"_s);
    WindowFixture::click(m_fixture->button(u"Reset usage counters"_s));
    QCOMPARE(m_fixture->toast(), u"Session counters reset"_s);
    m_fixture->system().setCounters(170 * gigabyte, 0);
    m_fixture->tick();
    QCOMPARE(m_fixture->toast(), u"Session counters reset"_s);
}

void ControlCenterTest::textsFromTheStoreAreNoMarkUp()
{
    WindowFixture::store(u"currentProfile"_s, u"<b>Turbo</b> %1 %5"_s);
    WindowFixture::store(u"windowTitleText"_s, u"<h1>Big</h1>"_s);
    open();
    const QLabel *summary = m_fixture->labelStarting(u"Active profile: <b>Turbo</b> %1 %5 / "_s);
    QCOMPARE(summary->textFormat(), Qt::PlainText);
    const auto *caption = m_fixture->find<QLabel>("titleBarText");
    QCOMPARE(caption->text(), u"<h1>Big</h1>"_s);
    QCOMPARE(caption->textFormat(), Qt::PlainText);
}

void ControlCenterTest::longTextsDoNotWidenTheWindow()
{
    const QString endless(20000, u'W');
    for (const auto &key : {u"currentProfile"_s, u"windowTitleText"_s, u"packageUnit"_s,
                            u"accentColor"_s, u"rules/1/app"_s, u"rules/1/priority"_s})
        WindowFixture::store(key, endless);
    WindowFixture::store(u"rules/size"_s, 1);
    open();
    m_fixture->tick();
    QVERIFY(m_fixture->labelStarting(u"Active profile: WWW"_s));
    QCOMPARE(m_fixture->window().size(), QSize(1180, 800));
    QVERIFY(m_fixture->window().minimumSizeHint().width() <= 1180);
    const auto *scroll = m_fixture->find<QScrollArea>("settingsScroll");
    QVERIFY(scroll->widget()->width() <= scroll->viewport()->width());
    const auto *lastButton = m_fixture->button(u"Clear rule indicators"_s);
    const QPoint corner = lastButton->mapTo(scroll->widget(), lastButton->rect().bottomRight());
    QVERIFY(scroll->widget()->rect().contains(corner));
}

TOVAN_TEST_MAIN(ControlCenterTest)
#include "controlcenter_test.moc"
