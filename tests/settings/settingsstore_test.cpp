#include "settings/settingsstore.h"

#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

const QDate today(2026, 2, 1);

AppRule blockedRule()
{
    AppRule rule;
    rule.blocked = true;
    return rule;
}

/// A state in which nothing is at its default.
StoredState changedState()
{
    StoredState state;
    for (const SettingRow &row : settingsTable()) {
        if (const auto *bytes = std::get_if<ByteCountSetting>(&row.setting))
            state.settings.*bytes->field = std::numeric_limits<quint64>::max();
        else if (const auto *number = std::get_if<NumberSetting>(&row.setting))
            state.settings.*number->field = number->high;
        else if (const auto *flag = std::get_if<FlagSetting>(&row.setting))
            state.settings.*flag->field = !flag->defaultValue;
        else if (const auto *text = std::get_if<TextSetting>(&row.setting))
            state.settings.*text->field = u"neither, 50 % nor \"%1\""_s;
    }
    state.usage.dayKey = u"2025-12-31"_s;
    state.usage.monthKey = u"2025-12"_s;
    state.usage.todayBytes = 10'000'000'000'000'000'000ULL;
    state.usage.monthBytes = std::numeric_limits<quint64>::max();
    state.rules.insert(u"curl"_s, {true, false, true, u"High"_s, 300, 0});
    state.rules.insert(u"Curl"_s, {false, true, false, u"whatever I typed"_s, 1, 100000});
    return state;
}

} // namespace

class SettingsStoreTest : public QObject
{
    Q_OBJECT

    QString storeFile() const { return m_directory->filePath(u"store.ini"_s); }
    void writeFile(const QByteArray &content) const;
    QByteArray fileContent() const;
    StoredState load() const;
    void save(const StoredState &state) const;

    std::unique_ptr<QTemporaryDir> m_directory;

private Q_SLOTS:
    void init();

    void anEmptyStoreYieldsTheDefaults();
    void everythingSavedIsLoaded();
    void keysAndValuesOnDisk();
    void aSaveIsTheSameWhenItIsRepeated();
    void rememberRulesOffStillRemembersThem();

    void numbersAreClampedOnLoad_data();
    void numbersAreClampedOnLoad();
    void alertLevelsAreClampedIndependently();
    void byteCountsAreNotClamped_data();
    void byteCountsAreNotClamped();
    void flagsOfTheWrongType_data();
    void flagsOfTheWrongType();
    void unknownTextsAreKept();
    void storedDaysAreNotComparedWithToday();

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
    void anyNameSavedIsTheNameLoaded_data();
    void anyNameSavedIsTheNameLoaded();
    void tenThousandRulesSurvive();

    void theLargestSizeIsNeverExceeded_data();
    void theLargestSizeIsNeverExceeded();
    void theLargestSizeHoldsWithoutRules();

    void aTruncatedStoreLoadsWhatIsThere();
    void binaryRubbishLoadsAndIsSavedOver_data();
    void binaryRubbishLoadsAndIsSavedOver();
    void aDirectoryInThePlaceOfTheStore();
    void aSaveThatFailedIsMadeUpForByTheNextOne();
};

void SettingsStoreTest::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    QVERIFY(m_directory->isValid());
}

void SettingsStoreTest::writeFile(const QByteArray &content) const
{
    QFile file(storeFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray SettingsStoreTest::fileContent() const
{
    QFile file(storeFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

StoredState SettingsStoreTest::load() const
{
    QSettings store(storeFile(), QSettings::IniFormat);
    return readStore(store, today);
}

void SettingsStoreTest::save(const StoredState &state) const
{
    QSettings store(storeFile(), QSettings::IniFormat);
    writeStore(store, state);
}

void SettingsStoreTest::anEmptyStoreYieldsTheDefaults()
{
    StoredState expected;
    expected.usage.dayKey = u"2026-02-01"_s;
    expected.usage.monthKey = u"2026-02"_s;
    QCOMPARE(load(), expected);
    writeFile({});
    QCOMPARE(load(), expected);
}

void SettingsStoreTest::everythingSavedIsLoaded()
{
    const StoredState state = changedState();
    save(state);
    QCOMPARE(load(), state);
}

void SettingsStoreTest::keysAndValuesOnDisk()
{
    StoredState state;
    state.settings.monthlyLimitBytes = std::numeric_limits<quint64>::max();
    state.usage = {u"2026-02-01"_s,        u"2026-02"_s, 9223372036854775808ULL,
                   9223372036854775809ULL, true,         true};
    state.rules.insert(u"a"_s, {true, false, true, u"High"_s, 300, 0});
    state.rules.insert(u"b"_s, {false, true, false, u"Normal"_s, 5, 7});
    save(state);

    const QStringList expected{
        u"[General]"_s,
        u"accentColor=Green"_s,
        u"closeToTray=true"_s,
        u"compactMode=false"_s,
        u"currentProfile=Balanced"_s,
        u"dayKey=2026-02-01"_s,
        u"defaultLimitKbps=5"_s,
        u"maxTableRows=100"_s,
        u"miniWidgetEnabled=false"_s,
        u"monthBytes=9223372036854775809"_s,
        u"monthKey=2026-02"_s,
        u"monthlyLimitBytes=18446744073709551615"_s,
        u"notificationsEnabled=true"_s,
        u"notify80=80"_s,
        u"notify95=95"_s,
        u"packageUnit=GB"_s,
        u"pauseOnLaunch=false"_s,
        u"refreshIntervalMs=1000"_s,
        u"rememberRules=true"_s,
        u"renewalDay=1"_s,
        u"showSystemRow=true"_s,
        u"startMinimized=false"_s,
        u"todayBytes=9223372036854775808"_s,
        u"windowTitleText=Tovan Network Monitor"_s,
        u"[rules]"_s,
        u"1\\app=a"_s,
        u"1\\blocked=true"_s,
        u"1\\dlKbps=300"_s,
        u"1\\dlLimit=true"_s,
        u"1\\priority=High"_s,
        u"1\\ulKbps=0"_s,
        u"1\\ulLimit=false"_s,
        u"2\\app=b"_s,
        u"2\\blocked=false"_s,
        u"2\\dlKbps=5"_s,
        u"2\\dlLimit=false"_s,
        u"2\\priority=Normal"_s,
        u"2\\ulKbps=7"_s,
        u"2\\ulLimit=true"_s,
        u"size=2"_s,
    };
    QCOMPARE(QString::fromUtf8(fileContent()).split(u'\n', Qt::SkipEmptyParts), expected);
}

void SettingsStoreTest::aSaveIsTheSameWhenItIsRepeated()
{
    save(changedState());
    const QByteArray first = fileContent();
    for (int i = 0; i < 3; ++i)
        save(load());
    QCOMPARE(fileContent(), first);
}

void SettingsStoreTest::rememberRulesOffStillRemembersThem()
{
    StoredState state;
    state.settings.rememberRules = false;
    state.rules.insert(u"curl"_s, blockedRule());
    save(state);
    QCOMPARE(load().settings.rememberRules, false);
    QCOMPARE(load().rules, state.rules);
}

void SettingsStoreTest::numbersAreClampedOnLoad_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<bool>("high");
    QTest::newRow("below") << u"-1"_s << false;
    QTest::newRow("zero") << u"0"_s << false;
    QTest::newRow("lowest int") << u"-2147483648"_s << false;
    QTest::newRow("above") << u"100001"_s << true;
    QTest::newRow("highest int") << u"2147483647"_s << true;
    QTest::newRow("too large for an int") << u"2147483648"_s << false;
    QTest::newRow("low bits within the bounds") << u"4294967316"_s << false;
    QTest::newRow("too large for 64 bits") << u"18446744073709551616"_s << false;
    QTest::newRow("letters") << u"abc"_s << false;
    QTest::newRow("empty") << u""_s << false;
    QTest::newRow("fraction") << u"20.5"_s << false;
    QTest::newRow("flag") << u"true"_s << false;
    QTest::newRow("list") << u"20, 30"_s << false;
    QTest::newRow("invalid") << u"@Invalid()"_s << false;
    QTest::newRow("bytes") << u"@ByteArray(\\0\\xff)"_s << false;
}

void SettingsStoreTest::numbersAreClampedOnLoad()
{
    QFETCH(QString, stored);
    QFETCH(bool, high);
    QString content = u"[General]\n"_s;
    for (const SettingRow &row : settingsTable())
        content += u"%1=%2\n"_s.arg(row.key, stored);
    writeFile(content.toUtf8());
    const AppSettings settings = load().settings;
    for (const SettingRow &row : settingsTable()) {
        if (const auto *number = std::get_if<NumberSetting>(&row.setting))
            QCOMPARE(settings.*number->field, high ? number->high : number->low);
    }
}

void SettingsStoreTest::alertLevelsAreClampedIndependently()
{
    writeFile("[General]\nnotify80=90\nnotify95=1\n");
    QCOMPARE(load().settings.notify80, 90);
    QCOMPARE(load().settings.notify95, 2);
}

void SettingsStoreTest::byteCountsAreNotClamped_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<quint64>("count");
    QTest::newRow("zero") << u"0"_s << quint64(0);
    QTest::newRow("largest") << u"18446744073709551615"_s << std::numeric_limits<quint64>::max();
    QTest::newRow("too large") << u"18446744073709551616"_s << quint64(0);
    QTest::newRow("negative") << u"-1"_s << quint64(0);
    QTest::newRow("letters") << u"abc"_s << quint64(0);
    QTest::newRow("empty") << u""_s << quint64(0);
}

void SettingsStoreTest::byteCountsAreNotClamped()
{
    QFETCH(QString, stored);
    QFETCH(quint64, count);
    writeFile(
        u"[General]\nmonthlyLimitBytes=%1\ntodayBytes=%1\nmonthBytes=%1\n"_s.arg(stored).toUtf8());
    const StoredState state = load();
    QCOMPARE(state.settings.monthlyLimitBytes, count);
    QCOMPARE(state.usage.todayBytes, count);
    QCOMPARE(state.usage.monthBytes, count);
}

void SettingsStoreTest::flagsOfTheWrongType_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<bool>("flag");
    QTest::newRow("zero") << u"0"_s << false;
    QTest::newRow("one") << u"1"_s << true;
    QTest::newRow("empty") << u""_s << false;
    QTest::newRow("word") << u"yes"_s << true;
    QTest::newRow("upper case") << u"FALSE"_s << false;
    QTest::newRow("invalid") << u"@Invalid()"_s << false;
}

void SettingsStoreTest::flagsOfTheWrongType()
{
    QFETCH(QString, stored);
    QFETCH(bool, flag);
    writeFile(u"[General]\ncloseToTray=%1\nstartMinimized=%1\n"_s.arg(stored).toUtf8());
    QCOMPARE(load().settings.closeToTray, flag);
    QCOMPARE(load().settings.startMinimized, flag);
}

void SettingsStoreTest::unknownTextsAreKept()
{
    writeFile("[General]\npackageUnit=TB\ncurrentProfile=Turbo\naccentColor=Pink\n"
              "windowTitleText=<b>bold</b>\n");
    const AppSettings settings = load().settings;
    QCOMPARE(settings.packageUnit, u"TB"_s);
    QCOMPARE(settings.currentProfile, u"Turbo"_s);
    QCOMPARE(settings.accentColor, u"Pink"_s);
    QCOMPARE(settings.windowTitleText, u"<b>bold</b>"_s);
}

void SettingsStoreTest::storedDaysAreNotComparedWithToday()
{
    writeFile("[General]\ndayKey=1999-12-31\nmonthKey=1999-12\ntodayBytes=5\nmonthBytes=6\n");
    QCOMPARE(load().usage, (UsageCounters{u"1999-12-31"_s, u"1999-12"_s, 5, 6, false, false}));
}

void SettingsStoreTest::rulesWithoutSpeedsTakeTheLoadedDefaultLimit()
{
    writeFile("[General]\ndefaultLimitKbps=77\n[rules]\nsize=1\n1\\app=curl\n");
    const AppRule expected{false, false, false, u"Normal"_s, 77, 77};
    QCOMPARE(load().rules, (RuleMap{{u"curl"_s, expected}}));
}

void SettingsStoreTest::speedsOfRulesAreNotClamped_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("kbps");
    QTest::newRow("above the bounds of a typed one") << u"2147483647"_s << 2147483647;
    QTest::newRow("negative") << u"-7"_s << -7;
    QTest::newRow("letters") << u"abc"_s << 0;
    QTest::newRow("too large for an int") << u"4294967297"_s << 0;
}

void SettingsStoreTest::speedsOfRulesAreNotClamped()
{
    QFETCH(QString, stored);
    QFETCH(int, kbps);
    writeFile(u"[rules]\nsize=1\n1\\app=curl\n1\\dlKbps=%1\n1\\ulKbps=%1\n"_s.arg(stored).toUtf8());
    QCOMPARE(load().rules.value(u"curl"_s).dlKbps, kbps);
    QCOMPARE(load().rules.value(u"curl"_s).ulKbps, kbps);
}

void SettingsStoreTest::elementsWithoutANameAreSkipped()
{
    writeFile("[rules]\nsize=3\n1\\app=\n1\\blocked=true\n2\\blocked=true\n3\\app=curl\n");
    QCOMPARE(load().rules.keys(), QStringList{u"curl"_s});
}

void SettingsStoreTest::theLaterOfTwoElementsOfOneNameWins()
{
    writeFile("[rules]\nsize=2\n1\\app=curl\n1\\blocked=true\n1\\dlKbps=9\n"
              "2\\app=curl\n2\\dlLimit=true\n");
    const AppRule expected{true, false, false, u"Normal"_s, 5, 5};
    QCOMPARE(load().rules, (RuleMap{{u"curl"_s, expected}}));
}

void SettingsStoreTest::holesInTheArrayAreSkipped()
{
    writeFile("[rules]\nsize=900\n3\\app=three\n900\\app=nine hundred\n");
    QCOMPARE(load().rules.keys(), (QStringList{u"nine hundred"_s, u"three"_s}));
}

void SettingsStoreTest::theSizeOfTheArrayBoundsWhatIsRead_data()
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

void SettingsStoreTest::theSizeOfTheArrayBoundsWhatIsRead()
{
    QFETCH(QByteArray, size);
    QFETCH(QStringList, apps);
    writeFile("[rules]\n" + size + "1\\app=a\n2\\app=b\n");
    QElapsedTimer elapsed;
    elapsed.start();
    QCOMPARE(load().rules.keys(), apps);
    QVERIFY2(elapsed.elapsed() < 1000, "the claimed size was counted through");
}

void SettingsStoreTest::groupsThatAreNoElementsAreIgnored()
{
    writeFile("[rules]\nsize=9\n0\\app=zero\n-1\\app=negative\n01\\app=padded\n+2\\app=signed\n"
              "x\\app=letter\n99999999999\\app=huge\n10\\app=beyond\napp=none\n1\\2\\app=nested\n"
              "4\\app=four\n");
    QCOMPARE(load().rules.keys(), QStringList{u"four"_s});
}

void SettingsStoreTest::elementsAreReadInTheOrderOfTheirNumbers()
{
    writeFile("[rules]\nsize=10\n10\\app=curl\n10\\dlKbps=10\n9\\app=curl\n9\\dlKbps=9\n"
              "2\\app=curl\n2\\dlKbps=2\n");
    QCOMPARE(load().rules.value(u"curl"_s).dlKbps, 10);
}

void SettingsStoreTest::neutralRulesAreNotWritten_data()
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

void SettingsStoreTest::neutralRulesAreNotWritten()
{
    QFETCH(AppRule, rule);
    QFETCH(bool, written);
    StoredState state;
    state.rules.insert(u"curl"_s, rule);
    save(state);
    QCOMPARE(load().rules, written ? state.rules : RuleMap());
}

void SettingsStoreTest::elementsAreNumberedWithoutGaps()
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

void SettingsStoreTest::aShrunkMapLeavesNoElementBehind()
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

void SettingsStoreTest::anEmptiedMapLeavesNoElementBehind()
{
    StoredState state = changedState();
    save(state);
    state.rules.clear();
    save(state);
    QVERIFY(!fileContent().contains("app="));
    QCOMPARE(load().rules, RuleMap());
}

void SettingsStoreTest::anyNameSavedIsTheNameLoaded_data()
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
    QTest::newRow("replacement character") << u"bad\ufffdbyte"_s;
    QTest::newRow("own row of the tables") << u"This PC"_s;
    QTest::newRow("long") << QString(100000, u'x');
}

void SettingsStoreTest::anyNameSavedIsTheNameLoaded()
{
    QFETCH(QString, name);
    StoredState state = load();
    state.rules.insert(name, blockedRule());
    state.settings.windowTitleText = name;
    save(state);
    QCOMPARE(load(), state);
}

void SettingsStoreTest::tenThousandRulesSurvive()
{
    StoredState state = load();
    for (int i = 0; i < 10000; ++i)
        state.rules.insert(u"application %1"_s.arg(i), {true, true, true, u"Low"_s, i, i});
    save(state);
    QCOMPARE(load(), state);
}

void SettingsStoreTest::theLargestSizeIsNeverExceeded_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("letters") << QString(1000, u'x');
    QTest::newRow("escaped") << QString(1000, u'\u0001');
    QTest::newRow("escaped with digits") << u"\u0001f"_s.repeated(500);
    QTest::newRow("quotes") << QString(1000, u'"');
    QTest::newRow("three bytes each") << QString(1000, u'日');
    QTest::newRow("emoji") << u"😀"_s.repeated(500);
    QTest::newRow("private use") << QString(1000, u'\uf8ff');
    QTest::newRow("empty") << QString();
}

void SettingsStoreTest::theLargestSizeIsNeverExceeded()
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

void SettingsStoreTest::theLargestSizeHoldsWithoutRules()
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

void SettingsStoreTest::aTruncatedStoreLoadsWhatIsThere()
{
    StoredState state = changedState();
    save(state);
    const QByteArray whole = fileContent();
    for (qsizetype size = 0; size < whole.size(); ++size) {
        writeFile(whole.first(size));
        const StoredState loaded = load();
        QVERIFY(loaded.rules.size() <= state.rules.size());
        for (const SettingRow &row : settingsTable()) {
            if (const auto *number = std::get_if<NumberSetting>(&row.setting)) {
                QVERIFY(loaded.settings.*number->field >= number->low);
                QVERIFY(loaded.settings.*number->field <= number->high);
            }
        }
    }
    save(state);
    QCOMPARE(load(), state);
}

void SettingsStoreTest::binaryRubbishLoadsAndIsSavedOver_data()
{
    QTest::addColumn<QByteArray>("rubbish");
    QRandomGenerator random(20260201);
    for (int i = 0; i < 50; ++i) {
        QByteArray bytes(1 + static_cast<qsizetype>(random.bounded(20000)), Qt::Uninitialized);
        for (char &byte : bytes)
            byte = static_cast<char>(random.bounded(256));
        QTest::addRow("random %d", i) << bytes;
    }
    QTest::newRow("NUL bytes") << QByteArray(5000, '\0');
    QTest::newRow("compressed") << qCompress(QByteArray(5000000, 'x'));
    QTest::newRow("one endless line") << QByteArray(1000000, 'a');
    QTest::newRow("brackets") << QByteArray(10000, '[');
    QTest::newRow("UTF-16") << QByteArray("\xff\xfe[\0G\0]\0\n\0a\0=\0\x31\0", 16);
}

void SettingsStoreTest::binaryRubbishLoadsAndIsSavedOver()
{
    QFETCH(QByteArray, rubbish);
    writeFile(rubbish);
    StoredState expected;
    expected.usage.dayKey = u"2026-02-01"_s;
    expected.usage.monthKey = u"2026-02"_s;
    QCOMPARE(load(), expected);
    const StoredState state = changedState();
    save(state);
    QCOMPARE(load(), state);
}

void SettingsStoreTest::aDirectoryInThePlaceOfTheStore()
{
    QVERIFY(QDir(m_directory->path()).mkdir(u"store.ini"_s));
    StoredState expected;
    expected.usage.dayKey = u"2026-02-01"_s;
    expected.usage.monthKey = u"2026-02"_s;
    QCOMPARE(load(), expected);
    save(changedState());
    QVERIFY(QFileInfo(storeFile()).isDir());
}

void SettingsStoreTest::aSaveThatFailedIsMadeUpForByTheNextOne()
{
    QVERIFY(QDir(m_directory->path()).mkdir(u"store.ini"_s));
    StoredState state = changedState();
    save(state);
    state.rules.remove(u"Curl"_s);
    state.usage.todayBytes += 1;
    save(state);
    QVERIFY(QDir(m_directory->path()).rmdir(u"store.ini"_s));
    state.usage.todayBytes += 1;
    save(state);
    QVERIFY(!fileContent().isEmpty());
    QCOMPARE(load(), state);
}

QTEST_GUILESS_MAIN(SettingsStoreTest)
#include "settingsstore_test.moc"
