#include "tests/support/testmain.h"
#include "tests/support/windowfixture.h"
#include "widgets/displaytext.h"

#include <QStyledItemDelegate>
#include <QTextLayout>

using namespace Qt::StringLiterals;

namespace {

/// Where the character at this place of a line is drawn.
qreal positionOf(const QString &text, qsizetype place)
{
    QTextLayout layout(text);
    QTextOption option;
    option.setTextDirection(Qt::LeftToRight); // as the window's labels have it
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(100000);
    layout.endLayout();
    return line.cursorToX(static_cast<int>(place));
}

/// Whether, as it is drawn, the name stands behind the words before it and before those after it.
bool readsInOrder(const QString &text, const QString &name)
{
    const qsizetype begin = text.indexOf(name);
    if (begin < 0)
        return false;
    const qsizetype end = begin + name.size();
    const qsizetype wordBefore = begin - 2; // beyond a blank
    const qsizetype wordAfter = end + 2;
    for (qsizetype place = begin; place < end; ++place) {
        const qreal x = positionOf(text, place);
        if ((wordBefore >= 0 && x < positionOf(text, wordBefore))
            || (wordAfter < text.size() && x > positionOf(text, wordAfter)))
            return false;
    }
    return true;
}

} // namespace

/// Names that would spoil the view, or read as other names.
class DisplayTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNameIsShownInOneLineThatCannotBeMistaken_data();
    void aNameIsShownInOneLineThatCannotBeMistaken();
    void everyControlCharacterIsABlank();
    void whatOverridesTheOrderIsWrittenOut();
    void everyViewShowsItAlike();
    void aNameOfManyLinesMakesNothingHigher();
    void sentencesReadInTheirOrder_data();
    void sentencesReadInTheirOrder();
    void namesAreKeptAsTheyAre();
};

void DisplayTextTest::aNameIsShownInOneLineThatCannotBeMistaken_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    const auto same
        = [](const char *title, const QString &name) { QTest::newRow(title) << name << name; };
    same("nothing", {});
    same("plain", u"curl"_s);
    same("blanks", u"  a  b  "_s);
    same("German", u"Müller"_s);
    same("Hebrew", u"\u05d0\u05d1\u05d2"_s);
    same("emoji", u"👩‍👩‍👧"_s);
    same("marks of a direction, which turn nothing around", u"a\u200eb\u200fc"_s);
    same("written out already", u"<U+202E>"_s);
    QTest::newRow("line feeds") << u"a\nb\r\nc"_s << u"a b  c"_s;
    QTest::newRow("tab") << u"a\tb"_s << u"a b"_s;
    QTest::newRow("separators") << u"a\u2028b\u2029c\u0085d"_s << u"a b c d"_s;
    QTest::newRow("escape") << u"\u001b[31mred\u007f"_s << u" [31mred "_s;
    QTest::newRow("an override") << u"evil\u202egpj.exe"_s << u"evil<U+202E>gpj.exe"_s;
    QTest::newRow("isolates") << u"\u2066a\u2069"_s << u"<U+2066>a<U+2069>"_s;
    QTest::newRow("both") << u"\n\u202d"_s << u" <U+202D>"_s;
}

void DisplayTextTest::aNameIsShownInOneLineThatCannotBeMistaken()
{
    QFETCH(QString, name);
    QTEST(displayedName(name), "shown");
}

void DisplayTextTest::everyControlCharacterIsABlank()
{
    for (char16_t c = 0; c < 0x20; ++c)
        QCOMPARE(displayedName(QChar(c)), u" "_s);
    for (char16_t c = 0x7f; c < 0xa0; ++c)
        QCOMPARE(displayedName(QChar(c)), u" "_s);
}

void DisplayTextTest::whatOverridesTheOrderIsWrittenOut()
{
    QString all;
    for (char16_t c = 0x2020; c < 0x2070; ++c)
        all += displayedName(QChar(c));
    for (const auto *written : {u"<U+202A>", u"<U+202B>", u"<U+202C>", u"<U+202D>", u"<U+202E>",
                                u"<U+2066>", u"<U+2067>", u"<U+2068>", u"<U+2069>"})
        QCOMPARE(all.count(QStringView(written)), 1);
    QCOMPARE(all.count(u'<'), 9);
}

void DisplayTextTest::everyViewShowsItAlike()
{
    const QString name = u"evil\u202egpj\n.exe"_s;
    const QString shown = u"evil<U+202E>gpj .exe"_s;
    WindowFixture fixture;
    fixture.open();
    fixture.tick();
    fixture.system().addProcess(7, name, 3);
    fixture.tick();
    QCOMPARE(fixture.toast(), u"New network app: "_s + shown);
    QVERIFY(
        fixture.labelStarting(u"Top app: "_s)->text().startsWith(u"Top app: "_s + shown + u" ("_s));

    for (const QTableWidget *table : {fixture.appsTable(), fixture.rulesTable()}) {
        const int row = WindowFixture::rowOf(table, name);
        QVERIFY(row >= 0);
        const auto *delegate = static_cast<const QStyledItemDelegate *>(table->itemDelegate());
        QCOMPARE(delegate->displayText(table->item(row, 0)->text(), QLocale()).trimmed(), shown);
    }

    QTableWidget *apps = fixture.appsTable();
    const int row = WindowFixture::rowOf(apps, name);
    QTest::mouseClick(apps->viewport(), Qt::LeftButton, {},
                      apps->visualItemRect(apps->item(row, 0)).center());
    QVERIFY(fixture.findText<QLabel>(shown));
    const QString details = fixture.labelStarting(u"PID: 7"_s)->text();
    QVERIFY2(details.contains(shown) && !details.contains(u'\u202e'), qPrintable(details));

    WindowFixture::click(fixture.button(u"Toggle Block"_s));
    QCOMPARE(fixture.toast(), u"Block enabled for "_s + shown);
}

void DisplayTextTest::aNameOfManyLinesMakesNothingHigher()
{
    WindowFixture fixture;
    fixture.open();
    fixture.tick();
    fixture.system().addProcess(7, u"many"_s + QString(60, u'\n') + u"lines"_s, 3);
    fixture.tick();
    QCOMPARE(fixture.find<QFrame>("toast")->height(), 40);
    QCOMPARE(fixture.window().size(), QSize(1180, 800));
}

void DisplayTextTest::sentencesReadInTheirOrder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    const auto same
        = [](const char *row, const QString &name) { QTest::newRow(row) << name << name; };
    same("Latin", u"curl"_s);
    same("Hebrew", u"\u05d0\u05d1\u05d2"_s);
    same("Arabic", u"\u0628\u0631\u0646\u0627\u0645\u062c"_s);
    same("Arabic with a number", u"\u0628\u0631\u0646 7"_s);
    same("Hebrew within Latin", u"a \u05d0\u05d1 b"_s);
    same("of another plane", u"\U00010800\U00010801"_s);
    QTest::newRow("an override") << u"evil\u202egpj"_s << u"evil<U+202E>gpj"_s;
    QTest::newRow("an end of what was not begun") << u"\u202c\u2069x"_s << u"<U+202C><U+2069>x"_s;
}

void DisplayTextTest::sentencesReadInTheirOrder()
{
    QFETCH(QString, name);
    QFETCH(QString, shown);
    WindowFixture fixture;
    fixture.open();
    fixture.tick();
    fixture.system().addProcess(7, name, 3);
    fixture.tick();
    QVERIFY(readsInOrder(fixture.toast(), shown));
    QVERIFY(readsInOrder(fixture.labelStarting(u"Top app: "_s)->text(), shown));

    RuleMap rules;
    for (const char *action : {"block", "dl", "ul", "high", "low", "normal", "reset"}) {
        const QString text = applyAction(rules, name, QString::fromLatin1(action), 5);
        QVERIFY2(readsInOrder(text, shown), action);
    }
}

void DisplayTextTest::namesAreKeptAsTheyAre()
{
    const QString name = u"\u05d0\u202egpj\n.exe"_s;
    WindowFixture fixture;
    fixture.open();
    fixture.system().addProcess(7, name, 3);
    fixture.tick();
    WindowFixture::clickCheckBox(fixture.appsTable(),
                                 WindowFixture::rowOf(fixture.appsTable(), name), 6);
    QCOMPARE(WindowFixture::stored(u"rules/1/app"_s), name);
    QVERIFY(WindowFixture::rowOf(fixture.rulesTable(), name) >= 0);
}

TOVAN_WINDOW_TEST(displaytext_test, DisplayTextTest)
#include "displaytext_test.moc"
