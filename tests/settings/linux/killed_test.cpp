#include "settings/settingsstore.h"
#include "tests/sampling/linux/support/networknamespace.h"
#include "tests/settings/linux/storewatch.h"

#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <array>
#include <csignal>
#include <optional>
#include <random>
#include <stop_token>
#include <sys/prctl.h>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// How long a program of a busy machine may take for its next save.
constexpr auto patienceWithKills = 100s;

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
    for (int i = 0; i < 200; ++i)
        state.rules.insert(u"application %1 / ü"_s.arg(i), {true, false, true, u"High"_s, i, 1});
    return state;
}

/// Packets that pass through two interfaces of the test's own network until this object ends.
class Traffic
{
public:
    Traffic()
    {
        runIp({u"link"_s, u"add"_s, u"left"_s, u"type"_s, u"veth"_s, u"peer"_s, u"name"_s,
               u"right"_s});
        runIp({u"link"_s, u"set"_s, u"left"_s, u"up"_s});
        runIp({u"link"_s, u"set"_s, u"right"_s, u"up"_s});
        runIp({u"address"_s, u"add"_s, u"192.0.2.1/24"_s, u"dev"_s, u"left"_s});
        m_thread = std::jthread([](const std::stop_token &stop) {
            while (!stop.stop_requested()) {
                sendBroadcasts("left", 10, 1000);
                std::this_thread::sleep_for(10ms);
            }
        });
    }

private:
    std::jthread m_thread;
};

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
        if (!watch.waitFor(StoreWatch::Event::SaveDone, QDeadlineTimer(patienceWithKills))) {
            finding.problem = u"no save after the start"_s;
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

    /// What the programs have counted up to now, in this month.
    quint64 monthBytes() const { return m_monthBytes; }

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
        const QDeadlineTimer deadline(patienceWithKills);
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

        // A month that ended meanwhile started from zero.
        const bool sameMonth = m_monthKey.isEmpty() || state.usage.monthKey == m_monthKey;
        const quint64 before = sameMonth ? m_monthBytes : 0;
        m_monthKey = state.usage.monthKey;
        m_monthBytes = state.usage.monthBytes;
        if (m_monthBytes < before)
            return u"usage fell from %1 to %2 bytes"_s.arg(before).arg(m_monthBytes);
        // Each tick counts one byte.
        const quint64 counted = m_monthBytes - before;
        if (m_countsTicks && sameMonth && (counted > ticksBegun || counted + 1 < ticksBegun))
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

/// The program, killed at any moment: 300 times, or as often as TOVAN_KILLS says, while there is
/// traffic; a third as often with an operating system behind it whose traffic is known.
///     TOVAN_KILLS=1000 ctest --test-dir build/check -R killed_test
class KilledTest : public QObject
{
    Q_OBJECT

public:
    /// Where the system allows no network of the test's own, there is only the machine's traffic.
    explicit KilledTest(bool ownNetwork) : m_ownNetwork(ownNetwork) { }

private Q_SLOTS:
    void theStoreIsWholeAndUpToDate_data();
    void theStoreIsWholeAndUpToDate();

private:
    static constexpr int lanes = 10;

    bool m_ownNetwork;
};

void KilledTest::theStoreIsWholeAndUpToDate_data()
{
    bool isSet = false;
    const int asked = qEnvironmentVariableIntValue("TOVAN_KILLS", &isSet);
    const int killsOfALane = std::max(isSet ? asked : 300, lanes) / lanes;
    QTest::addColumn<QString>("program");
    QTest::addColumn<bool>("countsTicks");
    QTest::addColumn<int>("killsOfALane");
    QTest::newRow("program") << qEnvironmentVariable("TOVAN_PROGRAM") << false << killsOfALane;
    QTest::newRow("program that tells its ticks")
        << qEnvironmentVariable("TOVAN_COUNTING_PROGRAM") << true << std::max(killsOfALane / 3, 1);
}

void KilledTest::theStoreIsWholeAndUpToDate()
{
    QFETCH(QString, program);
    QFETCH(bool, countsTicks);
    QFETCH(int, killsOfALane);

    std::optional<Traffic> traffic;
    if (m_ownNetwork && !countsTicks)
        traffic.emplace();
    std::vector<std::vector<Finding>> findings(lanes);
    std::array<quint64, lanes> monthBytes{};
    std::vector<std::thread> threads;
    for (int lane = 0; lane < lanes; ++lane) {
        threads.emplace_back([&, lane] {
            Lane programs(program, countsTicks, static_cast<unsigned>(lane));
            for (int kill = 0; kill < killsOfALane; ++kill)
                findings[static_cast<size_t>(lane)].push_back(programs.startAndKill(kill % 4));
            monthBytes.at(static_cast<size_t>(lane)) = programs.monthBytes();
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
    QCOMPARE(done, killsOfALane * lanes);
    QVERIFY2(inSaves > done / 10, "hardly a kill fell into a save");
    const quint64 leastBytes = *std::ranges::min_element(monthBytes);
    if (countsTicks || m_ownNetwork)
        QVERIFY2(leastBytes > 0, "nothing was there to be counted");
    qInfo("%d kills, %d of them in a save, %d of those before the lock was named; first save after "
          "%lld ms at most; %llu bytes or more counted in each store",
          done, inSaves, beforeNames, static_cast<long long>(longest.count()), leastBytes);
}

int killed_test(int argc, char *argv[])
{
    KilledTest test(enterOwnNetwork());
    const QCoreApplication app(argc, argv);
    return QTest::qExec(&test, argc, argv);
}
#include "killed_test.moc"
