#include "settings/settingsstore.h"
#include "tests/settings/linux/storewatch.h"
#include "tests/support/testmain.h"

#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <random>
#include <sys/prctl.h>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// What one kill has shown.
struct Finding
{
    QString problem; ///< empty when there was none
    bool lockLeft = false; ///< the kill fell into a save
    bool emptyLockLeft = false; ///< into the moment before the lock names its owner
    std::chrono::milliseconds firstSave{}; ///< from the start to the first save
};

/// A state that can be told from the defaults in every key, of a program that ticks.
StoredState seededState()
{
    StoredState state;
    for (const SettingRow &row : settingsTable()) {
        if (const auto *bytes = std::get_if<ByteCountSetting>(&row.setting))
            state.settings.*bytes->field = 12345678901234567890ULL;
        else if (const auto *number = std::get_if<NumberSetting>(&row.setting))
            state.settings.*number->field = number->high - 1;
        else if (const auto *flag = std::get_if<FlagSetting>(&row.setting))
            state.settings.*flag->field = !flag->defaultValue;
        else if (const auto *text = std::get_if<TextSetting>(&row.setting))
            state.settings.*text->field = u"stored"_s;
    }
    state.settings.pauseOnLaunch = false;
    state.settings.refreshIntervalMs = numberSetting(&AppSettings::refreshIntervalMs).low;
    state.usage = {usageDayKey(QDate::currentDate()), usageMonthKey(QDate::currentDate()), 0, 0};
    for (int i = 0; i < 100; ++i)
        state.rules.insert(u"application %1 / ü"_s.arg(i), {true, false, true, u"High"_s, i, 1});
    return state;
}

/// Programs of one store, killed one after the other. Used from one thread.
class Lane
{
public:
    Lane(QString program, bool countsTicks, unsigned seed)
        : m_program(std::move(program)),
          m_countsTicks(countsTicks),
          m_random(seed)
    {
        QDir().mkpath(QFileInfo(storeFile()).path());
        QSettings store(storeFile(), QSettings::IniFormat);
        writeStore(store, m_seeded);
    }

    /// Starts the program, kills it at a moment of the given kind and looks at the store.
    Finding startAndKill(int kind)
    {
        Finding finding;
        QProcess program;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_CONFIG_HOME"_s, m_directory.path());
        environment.insert(u"XDG_RUNTIME_DIR"_s, m_directory.path());
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        program.setProcessEnvironment(environment);
        program.setStandardErrorFile(QProcess::nullDevice());
        // A test that is ended itself leaves no program behind.
        program.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        StoreWatch watch(storeFile());
        const auto begin = std::chrono::steady_clock::now();
        program.start(m_program, QStringList());
        if (!watch.waitFor(StoreWatch::Event::SaveDone, QDeadlineTimer(25s))) {
            finding.problem = u"no save within 25 seconds of the start"_s;
            return finding;
        }
        finding.firstSave = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - begin);

        if (!waitForMoment(watch, kind)) {
            finding.problem = u"no further save"_s;
            return finding;
        }
        program.kill();
        program.waitForFinished();
        if (program.exitStatus() != QProcess::CrashExit)
            finding.problem = u"the program ended by itself"_s;

        const QFileInfo lock(storeFile() + u".lock"_s);
        finding.lockLeft = lock.exists();
        finding.emptyLockLeft = lock.exists() && lock.size() == 0;
        if (finding.problem.isEmpty())
            finding.problem = examine(static_cast<quint64>(program.readAllStandardOutput().size()));
        return finding;
    }

private:
    QString storeFile() const
    {
        return m_directory.filePath(u"Tovan/Tovan Network Monitor.conf"_s);
    }

    bool waitForMoment(StoreWatch &watch, int kind)
    {
        const auto pause = [this](int upTo) {
            std::uniform_int_distribution<int> microseconds(0, upTo);
            std::this_thread::sleep_for(std::chrono::microseconds(microseconds(m_random)));
        };
        watch.drain();
        const QDeadlineTimer deadline(25s);
        switch (kind) {
        case 0: // in the first steps of a save
            return watch.waitFor(StoreWatch::Event::SaveBegun, deadline);
        case 1: // anywhere in a save
            if (!watch.waitFor(StoreWatch::Event::SaveBegun, deadline))
                return false;
            pause(5000);
            return true;
        case 2: // about where the new file takes the store's place
            if (!watch.waitFor(StoreWatch::Event::FileNamed, deadline))
                return false;
            pause(500);
            return true;
        default: // anywhere
            pause(300000);
            return true;
        }
    }

    /// Empty when the store is whole and up to date with the ticks that began.
    QString examine(quint64 ticksBegun)
    {
        // A copy of its own name: QSettings remembers what it read from a file.
        const QString copy = m_directory.filePath(u"copy%1"_s.arg(m_copies++));
        if (!QFile::copy(storeFile(), copy))
            return u"no store"_s;
        QSettings store(copy, QSettings::IniFormat);
        const StoredState state = readStore(store, QDate());
        if (state.settings != m_seeded.settings)
            return u"settings were lost"_s;
        if (state.rules != m_seeded.rules)
            return u"rules were lost"_s;
        if (state.usage.dayKey.isEmpty() || state.usage.monthKey.isEmpty())
            return u"the day was lost"_s;
        if (!m_countsTicks)
            return {};

        // Each tick counts one byte. A month that ended meanwhile started from zero.
        const quint64 before = state.usage.monthKey == m_monthKey ? m_monthBytes : 0;
        const bool sameMonth = m_monthKey.isEmpty() || state.usage.monthKey == m_monthKey;
        const quint64 counted = state.usage.monthBytes - before;
        m_monthKey = state.usage.monthKey;
        m_monthBytes = state.usage.monthBytes;
        if (sameMonth && (counted > ticksBegun || counted + 1 < ticksBegun))
            return u"%1 of %2 ticks are in the store"_s.arg(counted).arg(ticksBegun);
        return {};
    }

    QTemporaryDir m_directory;
    QString m_program;
    bool m_countsTicks;
    std::mt19937 m_random;
    StoredState m_seeded = seededState();
    QString m_monthKey;
    quint64 m_monthBytes = 0;
    int m_copies = 0;
};

} // namespace

/// The program, killed at any moment.
class KilledTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theStoreIsWholeAndUpToDate_data();
    void theStoreIsWholeAndUpToDate();
};

void KilledTest::theStoreIsWholeAndUpToDate_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<bool>("countsTicks");
    QTest::addColumn<int>("kills");
    QTest::newRow("program") << qEnvironmentVariable("TOVAN_PROGRAM") << false << 300;
    QTest::newRow("program that tells its ticks")
        << qEnvironmentVariable("TOVAN_COUNTING_PROGRAM") << true << 100;
}

void KilledTest::theStoreIsWholeAndUpToDate()
{
    QFETCH(QString, program);
    QFETCH(bool, countsTicks);
    QFETCH(int, kills);
    constexpr int lanes = 10;

    std::vector<std::vector<Finding>> findings(lanes);
    std::vector<std::thread> threads;
    for (int lane = 0; lane < lanes; ++lane) {
        threads.emplace_back([&, lane] {
            Lane programs(program, countsTicks, static_cast<unsigned>(lane));
            for (int kill = 0; kill < kills / lanes; ++kill)
                findings[static_cast<size_t>(lane)].push_back(programs.startAndKill(kill % 4));
        });
    }
    for (std::thread &thread : threads)
        thread.join();

    int done = 0;
    int inSaves = 0;
    int beforeNames = 0;
    auto longest = 0ms;
    for (const auto &lane : findings) {
        for (const Finding &finding : lane) {
            QVERIFY2(finding.problem.isEmpty(), qPrintable(finding.problem));
            ++done;
            inSaves += finding.lockLeft;
            beforeNames += finding.emptyLockLeft;
            longest = std::max(longest, finding.firstSave);
        }
    }
    QCOMPARE(done, kills);
    QVERIFY2(inSaves > kills / 10, "hardly a kill fell into a save");
    qInfo("%d kills, %d of them in a save, %d of those before the lock was named; first save after "
          "%lld ms at most",
          done, inSaves, beforeNames, static_cast<long long>(longest.count()));
}

TOVAN_GUILESS_TEST(killed_test, KilledTest)
#include "killed_test.moc"
