#include "tests/rules/rulespagefixture.h"

using namespace Qt::StringLiterals;

/// What an edit in the Rules Manager makes of the rule.
class RulesValuesTest : public QObject, private RulesPageFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }
    void cleanup() { clear(); }

    void aNewNameInTheApplicationColumnMakesARule()
    {
        retype(clickIntoCell(table, 1, Application), u"aaa"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(table->rowCount(), 6);
        QCOMPARE(WindowFixture::rowTexts(table, 0),
                 QStringList({u"aaa"_s, u"Normal"_s, QString(), QString(), QString(), u"5"_s,
                              u"5"_s, u"0"_s}));
        QCOMPARE(WindowFixture::rowOf(table, u"app2"_s), 2);
    }

    void aNameThatIsNoRuleTargetMakesNoRule()
    {
        retype(clickIntoCell(table, 1, Application), u"This PC"_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(table->item(1, Application)->text(), u"This PC"_s);
        fixture->tick();
        QCOMPARE(table->rowCount(), 5);
        QCOMPARE(WindowFixture::rowOf(table, u"This PC"_s), -1);
    }

    void limitsAreReadLenientlyAndClamped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("letters") << u"fast"_s << u"1"_s;
        QTest::newRow("above") << u"100001"_s << u"100000"_s;
        QTest::newRow("zero") << u"0"_s << u"1"_s;
        QTest::newRow("empty") << u""_s << u"1"_s;
        QTest::newRow("too large for its type") << u"99999999999"_s << u"1"_s;
    }

    void limitsAreReadLenientlyAndClamped()
    {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        QLineEdit *editor = clickIntoCell(table, 1, UlKbps);
        retype(editor, typed);
        if (typed.isEmpty())
            QTest::keyClick(editor, Qt::Key_Backspace);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, UlKbps), shown);
    }

    void anEmptyPriorityIsNormalAndAnyWordIsKept()
    {
        retype(clickIntoCell(table, 1, Priority), u"  <b>urgent</b> %1 "_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, Priority), u"<b>urgent</b> %1"_s);
        retype(clickIntoCell(table, 1, Priority), u"   "_s);
        QTest::keyClick(openEditor(table), Qt::Key_Return);
        QTRY_COMPARE(cell(u"app2"_s, Priority), u"Normal"_s);
    }

    void switchingALimitOnFillsItsValueWithTheDefault()
    {
        // The shown default is no value of the rule's own until then.
        QVERIFY(!storedRules().contains(u"app2"_s));
        clickCheckBox(u"app2"_s, Dl);
        QCOMPARE(storedRules().value(u"app2"_s).toMap().value(u"dlKbps"_s).toInt(), 5);
        QCOMPARE(storedRules().value(u"app2"_s).toMap().value(u"ulKbps"_s).toInt(), 0);
        clickCheckBox(u"app2"_s, Block);
        QVERIFY(storedRules().value(u"app2"_s).toMap().value(u"blocked"_s).toBool());
    }

    void anEditSetsNeitherToastNorStatus()
    {
        const QString status = fixture->labelStarting(u"Applications: "_s)->text();
        auto *toast = fixture->find<QFrame>("toast");
        toast->hide();
        clickCheckBox(u"app2"_s, Dl);
        QVERIFY(toast->isHidden());
        QCOMPARE(fixture->labelStarting(u"Applications: "_s)->text(), status);
    }

private:
    /// Stored rules by application, each with its fields by key.
    static QVariantMap storedRules()
    {
        QSettings store(u"Tovan"_s, u"Tovan Network Monitor"_s);
        QVariantMap rules;
        const int count = store.beginReadArray(u"rules"_s);
        for (int i = 0; i < count; ++i) {
            store.setArrayIndex(i);
            QVariantMap fields;
            const auto keys = store.childKeys();
            for (const QString &key : keys)
                fields.insert(key, store.value(key));
            rules.insert(fields.value(u"app"_s).toString(), fields);
        }
        return rules;
    }
};

TOVAN_WINDOW_TEST(rulesvalues_test, RulesValuesTest)
#include "rulesvalues_test.moc"
