#include "settings/linux/storecontent.h"
#include "tests/settings/storefixture.h"
#include "tests/support/testmain.h"

#include <QRandomGenerator>
#include <QSettings>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

/// What is left of the content: the same where nothing is taken out.
QByteArray left(const QByteArray &content)
{
    return harmlessContent(content).value_or(content);
}

/// An object as the toolkit has it in a store: `true`.
const QByteArray object = R"(@Variant(\0\0\0\x1\x1))";

} // namespace

/// What is taken out of a store before the toolkit may read it.
class StoreContentTest : public QObject, private StoreFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }

    void whatTheProgramWritesIsHarmless_data();
    void whatTheProgramWritesIsHarmless();
    void serialisedObjectsAreLeftOut_data();
    void serialisedObjectsAreLeftOut();
    void everythingElseIsLeftAsItIs_data();
    void everythingElseIsLeftAsItIs();
    void longLinesAreCut_data();
    void longLinesAreCut();
    void nothingThatTheToolkitWouldDecodeIsLeft();
};

void StoreContentTest::whatTheProgramWritesIsHarmless_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << u"curl"_s;
    QTest::newRow("reads as an object") << u"@Variant(\0\0\0\x1\x1)"_s;
    QTest::newRow("reads as a time") << u"@DateTime(x)"_s;
    QTest::newRow("reads as an object in a list") << u"a, @Variant(x), @Variant(y)"_s;
    QTest::newRow("reads as an object in quotes") << u"\"@Variant(x)\",@Variant(y)"_s;
    QTest::newRow("reads as an object behind an end of line") << u"a\n@Variant(x)\nb=@Variant(y)"_s;
    QTest::newRow("NUL") << u"\0@Variant(x)"_s;
    QTest::newRow("semicolon") << u"a;b=@Variant(x)"_s;
    QTest::newRow("backslashes") << u"\\x40Variant(x) \\"_s;
    QTest::newRow("quote") << u"\""_s;
    QTest::newRow("bracket") << u"[General]"_s;
    QTest::newRow("as long as a text may be") << QString(32767, u'x');
    QTest::newRow("as long as a text may be, escaped") << QString(32767, u'\uffff');
    QTest::newRow("as long as a text may be, as bytes") << u'\ufeff' + QString(32766, u'\uffff');
    QTest::newRow("as long as a text may be, quoted") << QString(32767, u'"');
    QTest::newRow("as long as a text may be, control characters") << u"\u001ff"_s.repeated(16383);
}

void StoreContentTest::whatTheProgramWritesIsHarmless()
{
    QFETCH(QString, text);
    StoredState state = changedState();
    state.settings.windowTitleText = text;
    state.rules.insert(text, {true, true, true, text, 1, 1});
    save(state);
    QVERIFY(fileContent().size() > 0);
    QCOMPARE(harmlessContent(fileContent()), std::nullopt);
    QCOMPARE(load(), state);
}

void StoreContentTest::serialisedObjectsAreLeftOut_data()
{
    QTest::addColumn<QByteArray>("entry");
    const auto row
        = [](const char *name, const QByteArray &entry) { QTest::newRow(name) << entry; };
    row("object", "b=" + object);
    row("time", R"(b=@DateTime(\0\0\0\x10\0\0\0\0\0\0%\x87\xe5\0\0\0\0\x1))");
    row("without its end", R"(b=@Variant(\0\0\0)");
    row("blanks before it", "b= \t" + object);
    row("in quotes", "b=\"" + object + '"');
    row("in quotes that end within it", R"(b="@Var"iant(\0\0\0\x1\x1))");
    row("in a list", R"(b=1, "2", @Variant(\0\0\0\x1\x1), 3)");
    row("at the end of a list", R"(b=1,@Variant(\0\0\0\x1\x1))");
    row("escaped", R"(b=\x40Variant(\0\0\0\x1\x1))");
    row("escaped with many digits", R"(b=\x123450040Variant(\0\0\0\x1\x1))");
    row("escaped in base 8", R"(b=\100Variant(\0\0\0\x1\x1))");
    row("with an escape that is none", R"(b=@\zVariant(\0\0\0\x1\x1))");
    row("goes on in the next line", "b=@Vari\\\nant(\\0\\0\\0\\x1\\x1)");
    row("goes on in the next line of two characters", "b=@Vari\\\r\nant(\\0\\0\\0\\x1\\x1)");
    row("behind a byte order mark", "b=\xef\xbb\xbf" + object);
    row("around a byte order mark", "b=\\x40\xef\xbb\xbfVariant(\\0\\0\\0\\x1\\x1)");
    row("a key in quotes", "\"a=b\"c=" + object);
    row("a second sign", "b =" + object + "=");
}

void StoreContentTest::serialisedObjectsAreLeftOut()
{
    QFETCH(QByteArray, entry);
    QCOMPARE(left("[General]\na=1\n" + entry + "\nc=2\n"), "[General]\na=1\n\nc=2\n");
    QCOMPARE(left(entry), QByteArray());
}

void StoreContentTest::everythingElseIsLeftAsItIs_data()
{
    QTest::addColumn<QByteArray>("content");
    const auto row
        = [](const char *name, const QByteArray &content) { QTest::newRow(name) << content; };
    row("nothing", {});
    row("blank lines", "\n\r\n  \n\t");
    row("not at the beginning", "b=x" + object);
    row("doubled sign", "b=@" + object);
    row("doubled sign in a list", "b=1, @" + object);
    row("comma in quotes", "b=\"1," + object + '"');
    row("no value", object);
    row("a comment", "; b=" + object);
    row("behind a comment's sign", "b=1;c=" + object);
    row("other values of the toolkit",
        "a=@ByteArray(\\0\\xff)\nb=@String(\\0)\nc=@Rect(1 2 3 4)\nd=@Size(1 2)\ne=@Point(1 2)\n"
        "f=@Invalid()\ng=@variant(x)\nh=@Variantx\n");
    row("an open quote", "b=\"1\nc=" + object);
}

void StoreContentTest::everythingElseIsLeftAsItIs()
{
    QFETCH(QByteArray, content);
    QCOMPARE(harmlessContent(content), std::nullopt);
}

void StoreContentTest::longLinesAreCut_data()
{
    QTest::addColumn<QByteArray>("begin");
    QTest::addColumn<QByteArray>("filling");
    QTest::addColumn<QString>("character");
    QTest::newRow("value") << QByteArray("b=") << QByteArray("x") << u"x"_s;
    QTest::newRow("quoted value") << QByteArray("b=\"") << QByteArray("x") << u"x"_s;
    QTest::newRow("escapes") << QByteArray("b=") << QByteArray("\\n") << u"\n"_s;
    QTest::newRow("quoted escapes") << QByteArray("b=\"") << QByteArray("\\\"") << u"\""_s;
    QTest::newRow("three bytes each") << QByteArray("b=") << QByteArray("日") << u"日"_s;
    QTest::newRow("key") << QByteArray() << QByteArray("x") << QString();
    QTest::newRow("list") << QByteArray("b=1") << QByteArray(",") << QString();
    QTest::newRow("section") << QByteArray("[") << QByteArray("x") << QString();
}

void StoreContentTest::longLinesAreCut()
{
    QFETCH(QByteArray, begin);
    QFETCH(QByteArray, filling);
    QFETCH(QString, character);
    const QByteArray end = begin.contains('"') ? "\"" : "";
    const QByteArray content = "a=1\n" + begin + filling.repeated(2'000'000) + end + "\n[s]\nc=2\n";
    const auto cut = harmlessContent(content);
    QVERIFY(cut);
    QVERIFY(cut->size() <= longestStoreLine + 100);
    QVERIFY(cut->size() > longestStoreLine);
    QCOMPARE(harmlessContent(*cut), std::nullopt);

    writeFile(*cut);
    const QSettings store(storeFile(), QSettings::IniFormat);
    QCOMPARE(store.value(u"a"_s), u"1"_s);
    QCOMPARE(store.value(u"s/c"_s), u"2"_s);
    if (character.isEmpty())
        return;
    // As long as a text may be, and nothing else in it but for a last character that is cut.
    const QString value = store.value(u"b"_s).toString();
    QVERIFY(value.size() > 32767);
    QCOMPARE(value.left(32767), character.repeated(32767));
}

// The toolkit itself tells what it takes for an object.
void StoreContentTest::nothingThatTheToolkitWouldDecodeIsLeft()
{
    const QByteArrayList pieces{
        "@",   "Variant(", object,       object,  object,         "=",  "=",  ",",  ";",  "\"",
        "\\",  "\\x",      "40",         "\\100", "\n",           "\n", "\r", " ",  "\t", "a",
        "[",   "]",        "\\\n",       "\\0",   "\xef\xbb\xbf", ")",  "a=", "b=", "c=", "@@",
        "\\z", "[s]\n",    "@DateTime(", "\0",
    };
    QRandomGenerator random(20260201);
    int decoded = 0;
    for (int round = 0; round < 20000; ++round) {
        QByteArray content = "a=";
        const int length = random.bounded(1, 25);
        for (int i = 0; i < length; ++i)
            content += pieces.at(random.bounded(static_cast<int>(pieces.size())));
        const auto decodedIn = [this, round](const QByteArray &bytes, const char *suffix) {
            const QString path = folder() + u"/%1%2"_s.arg(round).arg(QLatin1StringView(suffix));
            QFile file(path);
            file.open(QIODevice::WriteOnly);
            file.write(bytes);
            file.close();
            int found = 0;
            const QSettings store(path, QSettings::IniFormat);
            const QStringList keys = store.allKeys();
            for (const QString &key : keys) {
                const QVariant value = store.value(key);
                const QVariantList values = value.typeId() == QMetaType::QVariantList
                    ? value.toList()
                    : QVariantList{value};
                for (const QVariant &one : values) {
                    found += one.typeId() != QMetaType::QString
                        && one.typeId() != QMetaType::QStringList
                        && one.typeId() != QMetaType::UnknownType;
                }
            }
            file.remove();
            return found;
        };
        const auto harmless = harmlessContent(content);
        decoded += decodedIn(content, "before") > 0;
        const int after = decodedIn(harmless.value_or(content), "after");
        QVERIFY2(after == 0, content.toPercentEncoding().constData());
        if (harmless)
            QCOMPARE(harmlessContent(*harmless), std::nullopt);
    }
    QVERIFY2(decoded > 1000, "hardly anything was put to the test");
}

TOVAN_GUILESS_TEST(storecontent_test, StoreContentTest)
#include "storecontent_test.moc"
