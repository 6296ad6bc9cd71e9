#include "tests/settings/controlcenterfixture.h"
#include "tests/support/octets.h"

#include <QComboBox>
#include <QGridLayout>
#include <QScrollArea>

using namespace Qt::StringLiterals;

namespace {

QStringList texts(const QList<QLabel *> &labels)
{
    QStringList list;
    for (const QLabel *label : labels)
        list.append(label->text());
    return list;
}

} // namespace

/// What the Control Center shows.
class ControlCenterTest : public QObject, private ControlCenterFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }
    void cleanup() { clear(); }

    void thePageIsBuiltAsItsSheetNamesIt();
    void panelsStandInTheirGrid();
    void panelsListTheirControlsInOrder();
    void controlsShowTheStoredSettings();
    void aStoredChoiceThatIsNotOfferedLeavesTheFirstEntry();
    void theAllowanceStartsInWholeGigabytesWhateverItsUnit();
    void textsFromTheStoreAreNoMarkUp();
    void longTextsDoNotWidenTheWindow();
};

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

TOVAN_WINDOW_TEST(controlcenter_test, ControlCenterTest)
#include "controlcenter_test.moc"
