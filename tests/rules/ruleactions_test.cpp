#include "tests/rules/bothtablesfixture.h"
#include "tests/support/celleditor.h"

#include <QCheckBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

enum AppsColumn { Name, DlLimit = 4, UlLimit, Block };
enum RulesColumn { RuleDl = 2, RuleUl, RuleBlock, RuleDlKbps };

const auto pleaseSelect = u"Select an application row first."_s;

} // namespace

/// Check boxes and toggle buttons of the Dashboard: what they do to rules and to the views.
class RuleActionsTest : public QObject, private BothTablesFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        prepare();
        toast()->parentWidget()->hide();
    }

    void cleanup() { clear(); }

    void aCheckBoxIsAnnouncedByItsColumnsHeader_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("header");
        QTest::newRow("download") << int(DlLimit) << u"DL Limit"_s;
        QTest::newRow("upload") << int(UlLimit) << u"UL Limit"_s;
        QTest::newRow("block") << int(Block) << u"Block"_s;
    }

    void aCheckBoxIsAnnouncedByItsColumnsHeader()
    {
        QFETCH(int, column);
        QFETCH(QString, header);
        clickBox(u"app2"_s, column);
        QVERIFY(toast()->isVisible());
        QCOMPARE(toast()->text(), header + u" enabled for app2"_s);
        clickBox(u"app2"_s, column);
        QCOMPARE(toast()->text(), header + u" disabled for app2"_s);
    }

    void aCheckBoxReachesRulesTableStoreAndInfoView()
    {
        clickBox(u"app2"_s, DlLimit);
        QCOMPARE(ruleBox(u"app2"_s, RuleDl), Qt::Checked);
        QCOMPARE(ruleBox(u"app1"_s, RuleDl), Qt::Unchecked);
        QVERIFY(stored(u"app2"_s).value(u"dlLimit"_s).toBool());
        QCOMPARE(stored(u"app2"_s).value(u"dlKbps"_s).toInt(), 5);
        QVERIFY(details().contains(u"\nDL Limit: On\n"_s));

        clickBox(u"app2"_s, UlLimit);
        QCOMPARE(ruleBox(u"app2"_s, RuleUl), Qt::Checked);
        clickBox(u"app2"_s, Block);
        QCOMPARE(ruleBox(u"app2"_s, RuleBlock), Qt::Checked);
        QVERIFY(details().contains(u"\nBlocked: Yes"_s));
    }

    void theApplicationsTableFollowsWithTheNextTick()
    {
        clickBox(u"app2"_s, Block);
        QCOMPARE(apps->item(rowOf(u"app2"_s), Block)->text(), u"Off"_s);
        QCOMPARE(apps->item(rowOf(u"app2"_s), Block)->checkState(), Qt::Checked);
        fixture->tick();
        QCOMPARE(apps->item(rowOf(u"app2"_s), Block)->text(), u"On"_s);
    }

    void aLimitKeepsItsValueWhenSwitchedOffAndOn()
    {
        rules->item(WindowFixture::rowOf(rules, u"app2"_s), RuleDlKbps)->setText(u"300"_s);
        for (int i = 0; i < 3; ++i) {
            clickBox(u"app2"_s, DlLimit);
            QCOMPARE(stored(u"app2"_s).value(u"dlKbps"_s).toInt(), 300);
        }
    }

    void otherColumnsAreNoRuleEdits()
    {
        apps->item(rowOf(u"app2"_s), 3)->setText(u"High"_s);
        QVERIFY(!toast()->isVisible());
        QVERIFY(stored(u"app2"_s).isEmpty());
        fixture->tick();
        QCOMPARE(apps->item(rowOf(u"app2"_s), 3)->text(), u"Normal"_s);
    }

    void theTablesOwnRowsGetNoRule()
    {
        for (quint32 pid = 1; pid <= 4; ++pid)
            fixture->system().removeProcess(pid);
        fixture->findText<QPushButton>(u"Blocker"_s)->click();
        auto *systemRow = fixture->findText<QCheckBox>(u"Show This PC summary row"_s);
        systemRow->setChecked(false);
        fixture->findText<QPushButton>(u"Apply changes"_s)->click();
        QCOMPARE(apps->item(0, Name)->text(), u"No matching apps"_s);
        toast()->parentWidget()->hide();
        clickBox(u"No matching apps"_s, Block);
        QVERIFY(!toast()->isVisible());
        QCOMPARE(storedRules(), 0);
        fixture->tick();
        QCOMPARE(apps->item(0, Block)->checkState(), Qt::Unchecked);
    }

    void theToggleButtonsActOnTheCurrentRow_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        QTest::newRow("download") << u"Toggle DL Limit"_s << u"dlLimit"_s << u"DL Limit"_s;
        QTest::newRow("upload") << u"Toggle UL Limit"_s << u"ulLimit"_s << u"UL Limit"_s;
        QTest::newRow("block") << u"Toggle Block"_s << u"blocked"_s << u"Block"_s;
    }

    void theToggleButtonsActOnTheCurrentRow()
    {
        QFETCH(QString, button);
        QFETCH(QString, field);
        QFETCH(QString, text);
        select(u"app3"_s);
        WindowFixture::click(fixture->button(button));
        QVERIFY(stored(u"app3"_s).value(field).toBool());
        QCOMPARE(toast()->text(), text + u" enabled for app3"_s);
        QVERIFY(details().startsWith(u"PID: 3\n"_s));
        WindowFixture::click(fixture->button(button));
        QCOMPARE(toast()->text(), text + u" disabled for app3"_s);
    }

    void theMenuEntryTogglesTheBlock()
    {
        select(u"app3"_s);
        fixture->menuAction(u"Toggle Block selected"_s)->trigger();
        QVERIFY(stored(u"app3"_s).value(u"blocked"_s).toBool());
        QVERIFY(details().contains(u"\nBlocked: Yes"_s));
    }

    void theToggleButtonsFindTheirRowAfterTenTicks()
    {
        select(u"app3"_s);
        for (int i = 0; i < 10; ++i)
            fixture->tick();
        WindowFixture::click(fixture->button(u"Toggle Block"_s));
        QVERIFY(stored(u"app3"_s).value(u"blocked"_s).toBool());
    }

    void withoutACurrentRowTheUserIsAskedToSelectOne()
    {
        apps->setCurrentItem(nullptr);
        WindowFixture::click(fixture->button(u"Toggle Block"_s));
        QCOMPARE(fixture->labelStarting(u"Select an application"_s)->text(), pleaseSelect);
        QCOMPARE(storedRules(), 0);
    }

    void theSystemRowIsNoApplication()
    {
        apps->setCurrentCell(0, 0);
        QCOMPARE(apps->item(0, Name)->text(), u"This PC"_s);
        WindowFixture::click(fixture->button(u"Toggle DL Limit"_s));
        QCOMPARE(fixture->labelStarting(u"Select an application"_s)->text(), pleaseSelect);
        QCOMPARE(storedRules(), 0);
    }

    void aCheckBoxPressedAcrossATickTakesEffect()
    {
        const QPoint box = WindowFixture::checkBoxCentre(apps, rowOf(u"app2"_s), Block);
        QTest::mousePress(apps->viewport(), Qt::LeftButton, {}, box);
        fixture->system().addProcess(9, u"busy"_s, 9);
        fixture->tick();
        QTest::mouseRelease(apps->viewport(), Qt::LeftButton, {}, box);
        QVERIFY(stored(u"app2"_s).value(u"blocked"_s).toBool());
        QCOMPARE(storedRules(), 1);
    }

    void whatIsTypedAfterATickClosedTheEditorTicksNoLimit()
    {
        QLineEdit *editor = clickIntoCell(apps, rowOf(u"app2"_s), DlLimit);
        retype(editor, u"100"_s);
        fixture->tick();
        QVERIFY(!openEditor(apps));
        for (const QChar letter : u" KB/s"_s)
            QTest::keyClicks(QApplication::focusWidget(), letter);
        QVERIFY(!toast()->isVisible());
        QCOMPARE(storedRules(), 0);
        QCOMPARE(apps->item(rowOf(u"app2"_s), DlLimit)->checkState(), Qt::Unchecked);
    }

    void namesThatLookLikeMarkUpOrPlaceholdersAreAnnouncedToTheLetter_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("mark-up") << u"<b>x"_s;
        QTest::newRow("placeholder") << u"%2 %1"_s;
    }

    void namesThatLookLikeMarkUpOrPlaceholdersAreAnnouncedToTheLetter()
    {
        QFETCH(QString, name);
        fixture->system().addProcess(9, name, 9);
        fixture->tick();
        clickBox(name, Block);
        QCOMPARE(toast()->text(), u"Block enabled for "_s + name);
        QCOMPARE(toast()->textFormat(), Qt::PlainText);
        QVERIFY(stored(name).value(u"blocked"_s).toBool());
        QCOMPARE(fixture->window().size(), QSize(1180, 800));
    }

    void twoProcessesOfOneProgramShareTheirRule()
    {
        fixture->system().addProcess(9, u"app2"_s, 1);
        fixture->tick();
        clickBox(u"app2"_s, Block);
        fixture->tick();
        int blocked = 0;
        for (int row = 0; row < apps->rowCount(); ++row)
            blocked += apps->item(row, Block)->text() == "On"_L1;
        QCOMPARE(blocked, 2);
        QCOMPARE(storedRules(), 1);
    }

private:
    int rowOf(const QString &application) const { return WindowFixture::rowOf(apps, application); }

    void clickBox(const QString &application, int column)
    {
        WindowFixture::clickCheckBox(apps, rowOf(application), column);
    }

    void select(const QString &application)
    {
        QTest::mouseClick(apps->viewport(), Qt::LeftButton, {},
                          apps->visualItemRect(apps->item(rowOf(application), Name)).center());
    }

    Qt::CheckState ruleBox(const QString &application, int column) const
    {
        return rules->item(WindowFixture::rowOf(rules, application), column)->checkState();
    }

    QString details() { return fixture->labelStarting(u"PID: "_s)->text(); }

    static int storedRules()
    {
        QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
        return store.beginReadArray(u"rules"_s);
    }

    /// Stored fields of one application's rule; empty when it has none.
    static QVariantMap stored(const QString &application)
    {
        QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
        const int count = store.beginReadArray(u"rules"_s);
        QVariantMap fields;
        for (int i = 0; i < count; ++i) {
            store.setArrayIndex(i);
            if (store.value(u"app"_s).toString() != application)
                continue;
            const auto keys = store.childKeys();
            for (const QString &key : keys)
                fields.insert(key, store.value(key));
        }
        return fields;
    }
};

TOVAN_WINDOW_TEST(ruleactions_test, RuleActionsTest)
#include "ruleactions_test.moc"
