#include "tests/settings/storefixture.h"
#include "tests/support/testmain.h"

#include <QSettings>
#include <QtTest>

#include <limits>

using namespace Qt::StringLiterals;

/// The rules in the store.
class StoredRulesTest : public QObject, private StoreFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }

    void rulesWithoutSpeedsTakeTheLoadedDefaultLimit();
    void speedsOfRulesAreNotClamped_data();
    void speedsOfRulesAreNotClamped();
    void elementsWithoutANameAreSkipped();
    void theLaterOfTwoElementsOfOneNameWins();
    void holesInTheArrayAreSkipped();
    void theSizeOfTheArrayBoundsWhatIsRead_data();
    void theSizeOfTheArrayBoundsWhatIsRead();
    void groupsThatAreNoElementsAreIgnored();
    void elementsAreReadInTheOrderOfTheirNumbers();
    void neutralRulesAreNotWritten_data();
    void neutralRulesAreNotWritten();
    void elementsAreNumberedWithoutGaps();
    void aShrunkMapLeavesNoElementBehind();
    void anEmptiedMapLeavesNoElementBehind();
    void keysOfNobodyTakeNoRuleAway_data();
    void keysOfNobodyTakeNoRuleAway();
    void anyNameSavedIsTheNameLoaded_data();
    void anyNameSavedIsTheNameLoaded();
    void aLongerNameIsCutOnLoad_data();
    void aLongerNameIsCutOnLoad();
    void halfACharacterIsReplacedOnLoad();
    void tenThousandRulesSurvive();
    void theLargestSizeIsNeverExceeded_data();
    void theLargestSizeIsNeverExceeded();
    void theLargestSizeHoldsWithoutRules();
};

void StoredRulesTest::rulesWithoutSpeedsTakeTheLoadedDefaultLimit()
{
    writeFile("[General]\ndefaultLimitKbps=77\n[rules]\nsize=1\n1\\app=curl\n");
    const AppRule expected{false, false, false, u"Normal"_s, 77, 77};
    QCOMPARE(load().rules, (RuleMap{{u"curl"_s, expected}}));
}

void StoredRulesTest::speedsOfRulesAreNotClamped_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("kbps");
    QTest::newRow("above the bounds of a typed one") << u"2147483647"_s << 2147483647;
    QTest::newRow("negative") << u"-7"_s << -7;
    QTest::newRow("letters") << u"abc"_s << 0;
    QTest::newRow("too large for an int") << u"4294967297"_s << 0;
}

void StoredRulesTest::speedsOfRulesAreNotClamped()
{
    QFETCH(QString, stored);
    QFETCH(int, kbps);
    writeFile(u"[rules]\nsize=1\n1\\app=curl\n1\\dlKbps=%1\n1\\ulKbps=%1\n"_s.arg(stored).toUtf8());
    QCOMPARE(load().rules.value(u"curl"_s).dlKbps, kbps);
    QCOMPARE(load().rules.value(u"curl"_s).ulKbps, kbps);
}

void StoredRulesTest::elementsWithoutANameAreSkipped()
{
    writeFile("[rules]\nsize=3\n1\\app=\n1\\blocked=true\n2\\blocked=true\n3\\app=curl\n");
    QCOMPARE(load().rules.keys(), QStringList{u"curl"_s});
}

void StoredRulesTest::theLaterOfTwoElementsOfOneNameWins()
{
    writeFile("[rules]\nsize=2\n1\\app=curl\n1\\blocked=true\n1\\dlKbps=9\n"
              "2\\app=curl\n2\\dlLimit=true\n");
    const AppRule expected{true, false, false, u"Normal"_s, 5, 5};
    QCOMPARE(load().rules, (RuleMap{{u"curl"_s, expected}}));
}

void StoredRulesTest::holesInTheArrayAreSkipped()
{
    writeFile("[rules]\nsize=900\n3\\app=three\n900\\app=nine hundred\n");
    QCOMPARE(load().rules.keys(), (QStringList{u"nine hundred"_s, u"three"_s}));
}

void StoredRulesTest::theSizeOfTheArrayBoundsWhatIsRead_data()
{
    QTest::addColumn<QByteArray>("size");
    QTest::addColumn<QStringList>("apps");
    const QStringList both{u"a"_s, u"b"_s};
    QTest::newRow("exact") << QByteArray("size=2\n") << both;
    QTest::newRow("too small") << QByteArray("size=1\n") << QStringList{u"a"_s};
    QTest::newRow("largest int") << QByteArray("size=2147483647\n") << both;
    QTest::newRow("too large for an int") << QByteArray("size=4294967298\n") << QStringList();
    QTest::newRow("zero") << QByteArray("size=0\n") << QStringList();
    QTest::newRow("negative") << QByteArray("size=-1\n") << QStringList();
    QTest::newRow("missing") << QByteArray() << QStringList();
    QTest::newRow("letters") << QByteArray("size=many\n") << QStringList();
}

void StoredRulesTest::theSizeOfTheArrayBoundsWhatIsRead()
{
    QFETCH(QByteArray, size);
    QFETCH(QStringList, apps);
    writeFile("[rules]\n" + size + "1\\app=a\n2\\app=b\n");
    QElapsedTimer elapsed;
    elapsed.start();
    QCOMPARE(load().rules.keys(), apps);
    QVERIFY2(elapsed.elapsed() < 1000, "the claimed size was counted through");
}

void StoredRulesTest::groupsThatAreNoElementsAreIgnored()
{
    writeFile("[rules]\nsize=9\n0\\app=zero\n-1\\app=negative\n01\\app=padded\n+2\\app=signed\n"
              "x\\app=letter\n99999999999\\app=huge\n10\\app=beyond\napp=none\n1\\2\\app=nested\n"
              "4\\app=four\n");
    QCOMPARE(load().rules.keys(), QStringList{u"four"_s});
}

void StoredRulesTest::elementsAreReadInTheOrderOfTheirNumbers()
{
    writeFile("[rules]\nsize=10\n10\\app=curl\n10\\dlKbps=10\n9\\app=curl\n9\\dlKbps=9\n"
              "2\\app=curl\n2\\dlKbps=2\n");
    QCOMPARE(load().rules.value(u"curl"_s).dlKbps, 10);
}

void StoredRulesTest::neutralRulesAreNotWritten_data()
{
    QTest::addColumn<AppRule>("rule");
    QTest::addColumn<bool>("written");
    const auto row = [](const char *name, const AppRule &rule, bool written) {
        QTest::newRow(name) << rule << written;
    };
    row("new", AppRule(), false);
    row("negative speeds", {false, false, false, u"Normal"_s, -1, -5}, false);
    row("download limit", {true, false, false, u"Normal"_s, 0, 0}, true);
    row("upload limit", {false, true, false, u"Normal"_s, 0, 0}, true);
    row("blocked", {false, false, true, u"Normal"_s, 0, 0}, true);
    row("priority", {false, false, false, u"Low"_s, 0, 0}, true);
    row("priority in lower case", {false, false, false, u"normal"_s, 0, 0}, true);
    row("download speed", {false, false, false, u"Normal"_s, 1, 0}, true);
    row("upload speed", {false, false, false, u"Normal"_s, 0, 1}, true);
}

void StoredRulesTest::neutralRulesAreNotWritten()
{
    QFETCH(AppRule, rule);
    QFETCH(bool, written);
    StoredState state;
    state.rules.insert(u"curl"_s, rule);
    save(state);
    QCOMPARE(load().rules, written ? state.rules : RuleMap());
}

void StoredRulesTest::elementsAreNumberedWithoutGaps()
{
    StoredState state;
    state.rules.insert(u"a"_s, AppRule());
    state.rules.insert(u"b"_s, blockedRule());
    state.rules.insert(u"c"_s, AppRule());
    state.rules.insert(u"d"_s, blockedRule());
    save(state);
    const QSettings store(storeFile(), QSettings::IniFormat);
    QCOMPARE(store.value(u"rules/size"_s).toInt(), 2);
    QCOMPARE(store.value(u"rules/1/app"_s), u"b"_s);
    QCOMPARE(store.value(u"rules/2/app"_s), u"d"_s);
}

void StoredRulesTest::aShrunkMapLeavesNoElementBehind()
{
    StoredState state;
    for (const auto *name : {u"a", u"b", u"c", u"d", u"e"})
        state.rules.insert(QString::fromUtf16(name), blockedRule());
    save(state);
    state.rules.remove(u"b"_s);
    state.rules.remove(u"c"_s);
    state.rules.remove(u"e"_s);
    save(state);

    QSettings store(storeFile(), QSettings::IniFormat);
    store.beginGroup(u"rules"_s);
    QCOMPARE(store.childGroups(), (QStringList{u"1"_s, u"2"_s}));
    QCOMPARE(store.value(u"size"_s).toInt(), 2);
    store.endGroup();
    QCOMPARE(load().rules, state.rules);
}

void StoredRulesTest::anEmptiedMapLeavesNoElementBehind()
{
    StoredState state = changedState();
    save(state);
    state.rules.clear();
    save(state);
    QVERIFY(!fileContent().contains("app="));
    QCOMPARE(load().rules, RuleMap());
}

void StoredRulesTest::keysOfNobodyTakeNoRuleAway_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::newRow("below the size") << QByteArray("size\\x=1\n");
    QTest::newRow("below a name") << QByteArray("1\\app\\x=1\n");
    QTest::newRow("a group without a name") << QByteArray("\\x=1\n");
    QTest::newRow("the same behind another group") << QByteArray("-1\\a=1\n\\x=1\n");
    QTest::newRow("the size in a group without a name") << QByteArray("\\size=9\n");
    QTest::newRow("a name in a group without a name") << QByteArray("1\\\\app=x\n");
    QTest::newRow("an element in a group without a name") << QByteArray("\\1\\app=x\n");
    QTest::newRow("an element that is a value") << QByteArray("1=x\n");
}

void StoredRulesTest::keysOfNobodyTakeNoRuleAway()
{
    QFETCH(QByteArray, keys);
    writeFile("[rules]\nsize=2\n1\\app=a\n1\\blocked=true\n2\\app=b\n2\\dlLimit=true\n" + keys);
    const StoredState state = load();
    QCOMPARE(state.rules.keys(), (QStringList{u"a"_s, u"b"_s}));
    for (int round = 0; round < 2; ++round) {
        save(state);
        QCOMPARE(load(), state);
    }
}

void StoredRulesTest::anyNameSavedIsTheNameLoaded_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("slash") << u"a/b//c/"_s;
    QTest::newRow("backslash") << u"C:\\new\\table\\"_s;
    QTest::newRow("percent") << u"100%20 %1 %"_s;
    QTest::newRow("quotes") << u"\"quoted\" 'single' \\\""_s;
    QTest::newRow("line feeds") << u"first\nsecond\r\nthird\n"_s;
    QTest::newRow("tabs") << u"\tname\t"_s;
    QTest::newRow("control characters") << u"\u0001\u0007f\u001f0\u007f\u0085"_s;
    QTest::newRow("embedded NUL") << u"nul\0inside"_s;
    QTest::newRow("NUL alone") << u"\0"_s;
    QTest::newRow("blanks around") << u"  blank  "_s;
    QTest::newRow("blank alone") << u" "_s;
    QTest::newRow("separators") << u"a,b;c=d:e[f]#g"_s;
    QTest::newRow("at sign") << u"@Invalid()"_s;
    QTest::newRow("two at signs") << u"@@ByteArray(x)"_s;
    QTest::newRow("variable") << u"@Variant(\0\0\0\x1)"_s;
    QTest::newRow("German") << u"Müller-Straße"_s;
    QTest::newRow("Japanese") << u"日本語プログラム"_s;
    QTest::newRow("Arabic") << u"\u202bبرنامج\u202c"_s;
    QTest::newRow("combining") << u"e\u0301\u200d"_s;
    QTest::newRow("emoji") << u"😀👩‍👩‍👧🇩🇪"_s;
    QTest::newRow("byte order mark") << u"\ufeffname"_s;
    QTest::newRow("byte order marks") << u"\ufeff\ufeffn\ufeffame ü日😀\n\0"_s;
    QTest::newRow("byte order mark alone") << u"\ufeff"_s;
    QTest::newRow("replacement character") << u"bad\ufffdbyte"_s;
    QTest::newRow("own row of the tables") << u"This PC"_s;
    QTest::newRow("as long as a line edit's") << QString(32767, u'x');
    QTest::newRow("as long as a line edit's, escaped") << QString(32767, u'\u0001');
}

void StoredRulesTest::anyNameSavedIsTheNameLoaded()
{
    QFETCH(QString, name);
    StoredState state = load();
    state.rules.insert(name, blockedRule());
    state.settings.windowTitleText = name;
    save(state);
    QCOMPARE(load(), state);
}

void StoredRulesTest::aLongerNameIsCutOnLoad_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qsizetype>("length");
    QTest::newRow("by one") << QString(32768, u'x') << qsizetype(32767);
    QTest::newRow("a hundred times") << QString(3276700, u'x') << qsizetype(32767);
    QTest::newRow("not within a character") << u"😀"_s.repeated(20000) << qsizetype(32766);
}

void StoredRulesTest::aLongerNameIsCutOnLoad()
{
    QFETCH(QString, name);
    QFETCH(qsizetype, length);
    StoredState state = load();
    state.rules.insert(name, blockedRule());
    state.settings.windowTitleText = name;
    state.usage.dayKey = name;
    save(state);
    const StoredState loaded = load();
    QCOMPARE(loaded.rules.keys(), QStringList{name.first(length)});
    QCOMPARE(loaded.settings.windowTitleText, name.first(length));
    QCOMPARE(loaded.usage.dayKey, name.first(length));
    save(loaded);
    QCOMPARE(load(), loaded);
}

void StoredRulesTest::halfACharacterIsReplacedOnLoad()
{
    writeFile("[rules]\nsize=1\n1\\app=half \\xd83d\n");
    const StoredState loaded = load();
    QCOMPARE(loaded.rules.keys(), QStringList{u"half ?"_s});
    save(loaded);
    QCOMPARE(load(), loaded);
}

void StoredRulesTest::tenThousandRulesSurvive()
{
    StoredState state = load();
    for (int i = 0; i < 10000; ++i)
        state.rules.insert(u"application %1"_s.arg(i), {true, true, true, u"Low"_s, i, i});
    save(state);
    QCOMPARE(load(), state);
}

void StoredRulesTest::theLargestSizeIsNeverExceeded_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("letters") << QString(1000, u'x');
    QTest::newRow("escaped") << QString(1000, u'\u0001');
    QTest::newRow("escaped with digits") << u"\u0001f"_s.repeated(500);
    QTest::newRow("quotes") << QString(1000, u'"');
    QTest::newRow("three bytes each") << QString(1000, u'日');
    QTest::newRow("emoji") << u"😀"_s.repeated(500);
    QTest::newRow("private use") << QString(1000, u'\uf8ff');
    QTest::newRow("byte order mark") << u'\ufeff' + QString(1000, u'\uf8ff');
    QTest::newRow("empty") << QString();
}

void StoredRulesTest::theLargestSizeIsNeverExceeded()
{
    QFETCH(QString, text);
    StoredState state = changedState();
    for (const SettingRow &row : settingsTable()) {
        if (const auto *setting = std::get_if<TextSetting>(&row.setting))
            state.settings.*setting->field = text;
    }
    for (int i = 0; i < 200; ++i) {
        constexpr int longest = std::numeric_limits<int>::min();
        state.rules.insert(text + QString::number(i), {true, true, true, text, longest, longest});
    }
    save(state);
    QVERIFY(fileContent().size() > 0);
    QVERIFY(fileContent().size() <= largestStoreSize(state));
}

void StoredRulesTest::theLargestSizeHoldsWithoutRules()
{
    StoredState state;
    for (const SettingRow &row : settingsTable()) {
        if (const auto *bytes = std::get_if<ByteCountSetting>(&row.setting))
            state.settings.*bytes->field = std::numeric_limits<quint64>::max();
        else if (const auto *text = std::get_if<TextSetting>(&row.setting))
            (state.settings.*text->field).clear();
    }
    save(state);
    QVERIFY(fileContent().size() > 0);
    QVERIFY(fileContent().size() <= largestStoreSize(state));
}

TOVAN_GUILESS_TEST(storedrules_test, StoredRulesTest)
#include "storedrules_test.moc"
