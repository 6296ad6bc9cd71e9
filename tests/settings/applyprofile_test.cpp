#include "tests/support/teststore.h"
#include "tests/support/windowfixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QMenu>
#include <QSystemTrayIcon>

using namespace Qt::StringLiterals;

/// Traffic profiles applied to the real window, from each of the three places that offer them.
class ApplyProfileTest : public QObject
{
    Q_OBJECT

    QComboBox *dashboardBox() const;
    QComboBox *controlCenterBox() const { return m_fixture->setting<QComboBox>(u"Profile"_s); }
    void applyFromTray(const QString &profile) const;
    QString shown(const QString &label) const
    {
        return m_fixture->setting<QLineEdit>(label)->text();
    }
    bool isChecked(const QString &label) const
    {
        return m_fixture->setting<QCheckBox>(label)->isChecked();
    }

    std::unique_ptr<WindowFixture> m_fixture;

private Q_SLOTS:
    void init();
    void cleanup();

    void theRunningWindowFollowsAtOnce();
    void theControlsFollowThePreset();
    void theLevelsOfStrictStayInTheControls();
    void theDashboardsBoxAppliesAndTheControlCentersFollows();
    void theControlCentersBoxAppliesAndTheDashboardsFollows();
    void everythingIsSaved();
    void theUserIsToldByStatusAndToast();
    void theProfileShownAlreadyIsNotAppliedAgain();
    void theTrayAppliesTheSameProfileAgain();
    void rulesStayAsTheyAre();
    void otherEditsStayUnapplied();
};

void ApplyProfileTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
    m_fixture->open();
}

void ApplyProfileTest::cleanup()
{
    m_fixture.reset();
}

QComboBox *ApplyProfileTest::dashboardBox() const
{
    return m_fixture->find<QFrame>("classicTop")->findChild<QComboBox *>();
}

void ApplyProfileTest::applyFromTray(const QString &profile) const
{
    const auto *tray = m_fixture->window().findChild<QSystemTrayIcon *>();
    const auto entries = tray->contextMenu()->actions();
    for (const QAction *entry : entries) {
        if (entry->text() != u"Profile"_s)
            continue;
        const auto profiles = entry->menu()->actions();
        for (QAction *action : profiles) {
            if (action->text() == profile)
                action->trigger();
        }
    }
}

void ApplyProfileTest::theRunningWindowFollowsAtOnce()
{
    const QHeaderView *rows = m_fixture->appsTable()->verticalHeader();
    const QTimer *timer = sampleTimer(m_fixture->window());
    applyFromTray(u"Gaming"_s);
    QCOMPARE(timer->interval(), 500);
    QCOMPARE(rows->defaultSectionSize(), 22);
    applyFromTray(u"Download"_s);
    QCOMPARE(timer->interval(), 750);
    QCOMPARE(rows->defaultSectionSize(), 22);
    applyFromTray(u"Work"_s);
    QCOMPARE(timer->interval(), 1000);
    QCOMPARE(rows->defaultSectionSize(), 30);
    QVERIFY(timer->isActive());
}

void ApplyProfileTest::theControlsFollowThePreset()
{
    WindowFixture::click(m_fixture->setting<QCheckBox>(u"Enable alerts"_s));
    applyFromTray(u"Strict"_s);
    QCOMPARE(shown(u"Refresh (ms)"_s), u"500"_s);
    QCOMPARE(shown(u"Max apps"_s), u"80"_s);
    QCOMPARE(shown(u"Limit (KB/s)"_s), u"256"_s);
    QVERIFY(isChecked(u"Compact rows"_s));
    QVERIFY(isChecked(u"Enable alerts"_s));
    QCOMPARE(shown(u"Warning %"_s), u"70"_s);
    QCOMPARE(shown(u"Critical %"_s), u"90"_s);
}

void ApplyProfileTest::theLevelsOfStrictStayInTheControls()
{
    applyFromTray(u"Strict"_s);
    applyFromTray(u"Work"_s);
    QCOMPARE(shown(u"Warning %"_s), u"70"_s);
    QCOMPARE(shown(u"Critical %"_s), u"90"_s);
    QVERIFY(isChecked(u"Enable alerts"_s));
    QVERIFY(!isChecked(u"Compact rows"_s));
    QCOMPARE(shown(u"Limit (KB/s)"_s), u"2500"_s);
}

void ApplyProfileTest::theDashboardsBoxAppliesAndTheControlCentersFollows()
{
    QTest::keyClick(dashboardBox(), Qt::Key_G);
    QCOMPARE(dashboardBox()->currentText(), u"Gaming"_s);
    QCOMPARE(controlCenterBox()->currentText(), u"Gaming"_s);
    QCOMPARE(m_fixture->toast(), u"Profile applied: Gaming"_s);
}

void ApplyProfileTest::theControlCentersBoxAppliesAndTheDashboardsFollows()
{
    QTest::keyClick(controlCenterBox(), Qt::Key_D);
    QCOMPARE(controlCenterBox()->currentText(), u"Download"_s);
    QCOMPARE(dashboardBox()->currentText(), u"Download"_s);
    QCOMPARE(m_fixture->toast(), u"Profile applied: Download"_s);
}

void ApplyProfileTest::everythingIsSaved()
{
    applyFromTray(u"Strict"_s);
    const auto stored = [](const QString &key) { return WindowFixture::stored(key).toString(); };
    QCOMPARE(stored(u"currentProfile"_s), u"Strict"_s);
    QCOMPARE(stored(u"refreshIntervalMs"_s), u"500"_s);
    QCOMPARE(stored(u"maxTableRows"_s), u"80"_s);
    QCOMPARE(stored(u"defaultLimitKbps"_s), u"256"_s);
    QCOMPARE(stored(u"compactMode"_s), u"true"_s);
    QCOMPARE(stored(u"notify80"_s), u"70"_s);
    QCOMPARE(stored(u"notify95"_s), u"90"_s);
}

void ApplyProfileTest::theUserIsToldByStatusAndToast()
{
    const QLabel *status = m_fixture->labelStarting(u"Ready"_s);
    applyFromTray(u"Balanced"_s);
    QCOMPARE(status->text(), u"Profile applied: Balanced"_s);
    QCOMPARE(m_fixture->toast(), u"Profile applied: Balanced"_s);
    QVERIFY(m_fixture->labelStarting(u"Active profile: Balanced / "_s));
    QCOMPARE(WindowFixture::stored(u"defaultLimitKbps"_s).toInt(), 5000);
}

void ApplyProfileTest::theProfileShownAlreadyIsNotAppliedAgain()
{
    removeStore();
    QTest::keyClick(dashboardBox(), Qt::Key_B);
    QTest::keyClick(controlCenterBox(), Qt::Key_B);
    QCOMPARE(m_fixture->toast(), QString());
    QVERIFY(!storeExists());
}

void ApplyProfileTest::theTrayAppliesTheSameProfileAgain()
{
    applyFromTray(u"Work"_s);
    m_fixture->find<QFrame>("toast")->hide();
    QVERIFY(storeExists());
    removeStore();
    m_fixture->setting<QLineEdit>(u"Max apps"_s)->setText(u"edited"_s);

    applyFromTray(u"Work"_s);
    QCOMPARE(m_fixture->toast(), u"Profile applied: Work"_s);
    QVERIFY(storeExists());
    QCOMPARE(shown(u"Max apps"_s), u"120"_s);
}

void ApplyProfileTest::rulesStayAsTheyAre()
{
    m_fixture->close();
    WindowFixture::store(u"rules/size"_s, 1);
    WindowFixture::store(u"rules/1/app"_s, u"curl"_s);
    WindowFixture::store(u"rules/1/dlLimit"_s, true);
    WindowFixture::store(u"rules/1/dlKbps"_s, 33);
    m_fixture->open();
    applyFromTray(u"Strict"_s);
    QCOMPARE(WindowFixture::stored(u"rules/1/app"_s), u"curl"_s);
    QCOMPARE(WindowFixture::stored(u"rules/1/dlKbps"_s).toInt(), 33);
}

void ApplyProfileTest::otherEditsStayUnapplied()
{
    m_fixture->setting<QLineEdit>(u"Title"_s)->setText(u"Mine"_s);
    m_fixture->setting<QLineEdit>(u"Reset day"_s)->setText(u"9"_s);
    applyFromTray(u"Gaming"_s);
    QCOMPARE(m_fixture->window().windowTitle(), u"Tovan Network Monitor"_s);
    QCOMPARE(WindowFixture::stored(u"renewalDay"_s).toInt(), 1);
    QCOMPARE(shown(u"Title"_s), u"Mine"_s);
    QCOMPARE(shown(u"Reset day"_s), u"9"_s);
}

TOVAN_WINDOW_TEST(applyprofile_test, ApplyProfileTest)
#include "applyprofile_test.moc"
