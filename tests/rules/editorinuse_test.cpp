#include "tests/rules/bothtablesfixture.h"
#include "tests/support/celleditor.h"

using namespace Qt::StringLiterals;

/// A tick while an editor is in the middle of something: an input method composes, or a mouse
/// button is held down in it.
class EditorInUseTest : public QObject, private BothTablesFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }
    void cleanup() { clear(); }

    void theTableWaitsForAComposition_data() { onBothPages(); }

    void theTableWaitsForAComposition()
    {
        QFETCH(bool, onRulesPage);
        QLineEdit *editor = openEditorOn(onRulesPage);
        QInputMethodEvent composing(u"にほん"_s, {});
        QApplication::sendEvent(editor, &composing);
        endApplicationAndTick();
        QCOMPARE(openEditor(table), editor);
        QVERIFY(WindowFixture::rowOf(table, u"app2"_s) >= 0);

        QInputMethodEvent written;
        written.setCommitString(u"日本"_s);
        QApplication::sendEvent(editor, &written);
        QTRY_COMPARE(WindowFixture::rowOf(table, u"app2"_s), -1);
        QVERIFY(!openEditor(table));
    }

    void theTableWaitsForTheMouse_data() { onBothPages(); }

    void theTableWaitsForTheMouse()
    {
        QFETCH(bool, onRulesPage);
        QLineEdit *editor = openEditorOn(onRulesPage);
        QTest::mousePress(editor, Qt::LeftButton, {}, QPoint(4, editor->height() / 2));
        endApplicationAndTick();
        QCOMPARE(openEditor(table), editor);
        QVERIFY(WindowFixture::rowOf(table, u"app2"_s) >= 0);

        QTest::mouseRelease(editor, Qt::LeftButton, {}, QPoint(30, editor->height() / 2));
        QTRY_COMPARE(WindowFixture::rowOf(table, u"app2"_s), -1);
    }

    void theTableWaitsNoLongerThanTheEditorIsThere_data() { onBothPages(); }

    void theTableWaitsNoLongerThanTheEditorIsThere()
    {
        QFETCH(bool, onRulesPage);
        QLineEdit *editor = openEditorOn(onRulesPage);
        QInputMethodEvent composing(u"にほん"_s, {});
        QApplication::sendEvent(editor, &composing);
        endApplicationAndTick();
        QTest::keyClick(editor, Qt::Key_Escape);
        QTRY_COMPARE(WindowFixture::rowOf(table, u"app2"_s), -1);
    }

private:
    static void onBothPages()
    {
        QTest::addColumn<bool>("onRulesPage");
        QTest::newRow("applications") << false;
        QTest::newRow("rules") << true;
    }

    QLineEdit *openEditorOn(bool onRulesPage)
    {
        sampleTimer(fixture->window())->setInterval(60000); // ticks come from the test
        if (onRulesPage)
            WindowFixture::click(fixture->button(u"\u2263    Rules"_s));
        table = onRulesPage ? rules : apps;
        return clickIntoCell(table, WindowFixture::rowOf(table, u"app2"_s), 0);
    }

    void endApplicationAndTick()
    {
        fixture->system().removeProcess(2);
        fixture->tick();
    }

    QTableWidget *table = nullptr;
};

TOVAN_WINDOW_TEST(editorinuse_test, EditorInUseTest)
#include "editorinuse_test.moc"
