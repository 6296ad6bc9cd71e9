#include "tests/settings/storefixture.h"
#include "tests/support/testmain.h"

#include <QDir>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// The settings and counters in the store, and stores that are damaged.
class SettingsStoreTest : public QObject, private StoreFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }

    void anEmptyStoreYieldsTheDefaults();
    void everythingSavedIsLoaded();
    void keysAndValuesOnDisk();
    void aSaveIsTheSameWhenItIsRepeated();
    void whateverDiffersFromTheStoreIsWritten_data();
    void whateverDiffersFromTheStoreIsWritten();
    void nothingElseIsWritten();
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
    void aTruncatedStoreLoadsWhatIsThere();
    void binaryRubbishLoadsAndIsSavedOver_data();
    void binaryRubbishLoadsAndIsSavedOver();
    void aDirectoryInThePlaceOfTheStore();
    void aSaveThatFailedIsMadeUpForByTheNextOne();
    void aStoreIsTriedAgainLaterAndLater();
};

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

    QStringList expected{
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
    // How lines end, and their order within a section, is the system's matter.
    QStringList found
        = QString::fromUtf8(fileContent()).remove(u'\r').split(u'\n', Qt::SkipEmptyParts);
    found.sort();
    expected.sort();
    QCOMPARE(found, expected);
}

void SettingsStoreTest::aSaveIsTheSameWhenItIsRepeated()
{
    save(changedState());
    const QByteArray first = fileContent();
    for (int i = 0; i < 3; ++i)
        save(load());
    QCOMPARE(fileContent(), first);
}

void SettingsStoreTest::whateverDiffersFromTheStoreIsWritten_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("rules") << u"rules"_s;
    prepare(); // init() comes later
    save(changedState());
    const QStringList keys = QSettings(storeFile(), QSettings::IniFormat).allKeys();
    for (const QString &key : keys) {
        if (!key.startsWith("rules/"_L1))
            QTest::newRow(qPrintable(key)) << key;
    }
}

/// Key by key: each of them is the only one that is not in the store yet.
void SettingsStoreTest::whateverDiffersFromTheStoreIsWritten()
{
    QFETCH(QString, key);
    save(changedState());
    // Each system has an order of its own for what is added.
    const auto lines = [this] {
        QByteArrayList sorted = fileContent().split('\n');
        std::ranges::sort(sorted);
        return sorted;
    };
    const QByteArrayList whole = lines();
    QSettings(storeFile(), QSettings::IniFormat).remove(key);
    const StoredState stored = load();
    QVERIFY(stored != changedState());
    {
        QSettings store(storeFile(), QSettings::IniFormat);
        writeStore(store, changedState(), &stored);
    }
    QCOMPARE(lines(), whole);
}

void SettingsStoreTest::nothingElseIsWritten()
{
    const StoredState stored = changedState();
    save(stored);
    QSettings store(storeFile(), QSettings::IniFormat);
    const QStringList keys = store.allKeys();
    store.clear();
    store.sync();
    writeStore(store, stored, &stored);
    QCOMPARE(store.allKeys(), QStringList());
    StoredState later = stored;
    ++later.usage.todayBytes;
    writeStore(store, later, &stored);
    QCOMPARE(store.allKeys(), QStringList(u"todayBytes"_s));
    writeStore(store, stored);
    QCOMPARE(store.allKeys(), keys);
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
    QVERIFY(QDir(folder()).mkdir(u"store.ini"_s));
    StoredState expected;
    expected.usage.dayKey = u"2026-02-01"_s;
    expected.usage.monthKey = u"2026-02"_s;
    QCOMPARE(load(), expected);
    save(changedState());
    QVERIFY(QFileInfo(storeFile()).isDir());
}

void SettingsStoreTest::aSaveThatFailedIsMadeUpForByTheNextOne()
{
    QVERIFY(QDir(folder()).mkdir(u"store.ini"_s));
    StoredState state = changedState();
    save(state);
    state.rules.remove(u"Curl"_s);
    state.usage.todayBytes += 1;
    save(state);
    QVERIFY(QDir(folder()).rmdir(u"store.ini"_s));
    state.usage.todayBytes += 1;
    save(state);
    QVERIFY(!fileContent().isEmpty());
    QCOMPARE(load(), state);
}

void SettingsStoreTest::aStoreIsTriedAgainLaterAndLater()
{
    QList<std::chrono::milliseconds> delays{0ms};
    for (int failure = 0; failure < 8; ++failure)
        delays.append(nextRetryDelay(delays.last()));
    QCOMPARE(delays, (QList<std::chrono::milliseconds>{0ms, 250ms, 500ms, 1s, 2s, 4s, 8s, 8s, 8s}));
}

TOVAN_GUILESS_TEST(settingsstore_test, SettingsStoreTest)
#include "settingsstore_test.moc"
