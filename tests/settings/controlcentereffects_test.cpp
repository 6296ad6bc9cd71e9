#include "tests/settings/controlcenterfixture.h"
#include "tests/support/octets.h"

#include "shell/minispeedwidget.h"

#include <QComboBox>
#include <QHeaderView>

using namespace Qt::StringLiterals;

/// What the running window does when settings are applied or data is cleared.
class ControlCenterEffectsTest : public QObject, private ControlCenterFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }
    void cleanup() { clear(); }

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
};

void ControlCenterEffectsTest::theTimerRunsAtTheNewIntervalAtOnce()
{
    open();
    type(u"Refresh (ms)"_s, u"100"_s);
    apply();
    const QTimer *timer = sampleTimer(m_fixture->window());
    QCOMPARE(timer->interval(), 250);
    QVERIFY(timer->isActive());
}

void ControlCenterEffectsTest::compactRowsChangeTheTableAtOnce()
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

void ControlCenterEffectsTest::theSystemRowIsHiddenAtOnce()
{
    m_fixture->system().addProcess(10, u"curl"_s, 1);
    open();
    m_fixture->tick();
    QVERIFY(WindowFixture::rowOf(m_fixture->appsTable(), u"This PC"_s) >= 0);
    check(u"Show This PC summary row"_s, false);
    apply();
    QCOMPARE(WindowFixture::rowOf(m_fixture->appsTable(), u"This PC"_s), -1);
}

void ControlCenterEffectsTest::startPausedPausesAtOnceAndNeverResumes()
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

void ControlCenterEffectsTest::theMiniMonitorFollowsItsBox()
{
    open();
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

void ControlCenterEffectsTest::theAccentChangesNoColour()
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

void ControlCenterEffectsTest::theSummaryTellsThePlan()
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

void ControlCenterEffectsTest::theProfileBoxAppliesAtOnce()
{
    open();
    choose(u"Profile"_s, u"Gaming"_s);
    QCOMPARE(WindowFixture::stored(u"currentProfile"_s), u"Gaming"_s);
    QCOMPARE(sampleTimer(m_fixture->window())->interval(), 500);
    QCOMPARE(m_fixture->toast(), u"Profile applied: Gaming"_s);
    QVERIFY(m_fixture->labelStarting(u"Active profile: Gaming / "_s));
}

void ControlCenterEffectsTest::applyTakesOverTheShownProfileWithoutItsPreset()
{
    WindowFixture::store(u"currentProfile"_s, u"Turbo"_s);
    WindowFixture::store(u"refreshIntervalMs"_s, 3000);
    open();
    apply();
    QCOMPARE(WindowFixture::stored(u"currentProfile"_s), u"Balanced"_s);
    QCOMPARE(WindowFixture::stored(u"refreshIntervalMs"_s).toInt(), 3000);
}

void ControlCenterEffectsTest::clearingRulesForgetsThemWithoutAWord()
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

void ControlCenterEffectsTest::clearingNoRulesStillSavesAndRefreshes()
{
    open();
    QLabel *status = m_fixture->labelStarting(u"Ready"_s);
    forgetSaves();
    WindowFixture::click(m_fixture->button(u"Clear rule indicators"_s));
    QVERIFY(wasSaved());
    QVERIFY(status->text().startsWith(u"Applications: "_s));
}

void ControlCenterEffectsTest::resettingUsageClearsDayMonthAndSession()
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

void ControlCenterEffectsTest::resettingUsageDoesNotAllowTheAlertAgain()
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

TOVAN_WINDOW_TEST(controlcentereffects_test, ControlCenterEffectsTest)
#include "controlcentereffects_test.moc"
