#include "sampling/linux/filedescriptor.h"
#include "tests/support/windowfixture.h"

#include <QLockFile>

#include <array>
#include <chrono>
#include <climits>
#include <poll.h>
#include <sys/inotify.h>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Notices who looks into a file.
class ReadWatch
{
public:
    explicit ReadWatch(const QString &path) : m_descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        // Equal events become one where nothing comes between them.
        const uint32_t events = IN_OPEN | IN_CLOSE;
        if (inotify_add_watch(m_descriptor.get(), QFile::encodeName(path).constData(), events) < 0)
            qFatal("cannot watch %s", qPrintable(path));
    }

    /// How often the file was opened since the last call.
    int count()
    {
        int opened = 0;
        // A file that is watched itself has no name in its events.
        std::array<inotify_event, 64> events{};
        ssize_t size = 0;
        while ((size = read(m_descriptor.get(), events.data(), sizeof events)) > 0) {
            const auto read = std::span(events).first(static_cast<size_t>(size) / sizeof events[0]);
            opened += static_cast<int>(std::ranges::count_if(
                read, [](const inotify_event &event) { return (event.mask & IN_OPEN) != 0; }));
        }
        return opened;
    }
    /// Waits until it is opened.
    void wait()
    {
        pollfd waiting{m_descriptor.get(), POLLIN, 0};
        poll(&waiting, 1, 20000);
    }

private:
    FileDescriptor m_descriptor;
};

/// How often one try to have a lock opens its file at most: to see whether it is forgotten, once
/// more before removing it, and to remove it.
constexpr int opensOfOneTry = 3;

int todayBytes()
{
    return WindowFixture::stored(u"todayBytes"_s).toInt();
}

} // namespace

/// The real window while another process writes its store.
class StoreInUseTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowFixture> m_fixture;
    std::unique_ptr<QLockFile> m_lock;
    QString m_storePath;
    QString m_lockPath;

private Q_SLOTS:
    void init();
    void cleanup();
    void ticksDoNotWaitForIt();
    void itIsTriedLessOftenAfterEachFailure();
    void itIsSavedAlsoWhilePaused();
    void theSaveThatEndsTheProgramWaits_data();
    void theSaveThatEndsTheProgramWaits();
    void theSaveThatEndsTheProgramWaitsForTwoSecondsAtMost();
};

void StoreInUseTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
    WindowFixture::store(u"closeToTray"_s, false);
    m_fixture->open();
    m_fixture->tick();
    m_storePath = WindowFixture::storePath();
    m_lockPath = m_storePath + u".lock"_s;
    m_lock = std::make_unique<QLockFile>(m_lockPath);
    QVERIFY(m_lock->lock());
    m_fixture->system().setCounters(1, 0);
}

void StoreInUseTest::cleanup()
{
    m_lock.reset();
    m_fixture.reset();
}

void StoreInUseTest::ticksDoNotWaitForIt()
{
    ReadWatch watch(m_lockPath);
    m_fixture->tick();
    // Whoever waits looks again and again.
    const int opened = watch.count();
    QVERIFY2(0 < opened && opened <= opensOfOneTry, qPrintable(QString::number(opened)));
    QCOMPARE(todayBytes(), 0);
    m_lock->unlock();
    QTRY_COMPARE(todayBytes(), 1);
}

void StoreInUseTest::itIsTriedLessOftenAfterEachFailure()
{
    ReadWatch watch(m_lockPath);
    const QDeadlineTimer deadline(2s);
    int ticks = 0;
    while (!deadline.hasExpired()) {
        m_fixture->tick();
        ++ticks;
        QCoreApplication::processEvents();
    }
    const int opened = watch.count();
    // Tries after 0, 250, 750 and 1750 ms.
    QVERIFY2(0 < opened && opened <= 4 * opensOfOneTry,
             qPrintable(u"%1 in %2 ticks"_s.arg(opened).arg(ticks)));
    QVERIFY(ticks > 4);
}

void StoreInUseTest::itIsSavedAlsoWhilePaused()
{
    m_fixture->tick();
    WindowFixture::click(m_fixture->button(u"Pause"_s));
    QCOMPARE(todayBytes(), 0);
    m_lock->unlock();
    QTRY_COMPARE(todayBytes(), 1);
}

void StoreInUseTest::theSaveThatEndsTheProgramWaits_data()
{
    QTest::addColumn<bool>("afterFailures");
    QTest::newRow("at once") << false;
    QTest::newRow("after failures") << true;
}

void StoreInUseTest::theSaveThatEndsTheProgramWaits()
{
    QFETCH(bool, afterFailures);
    ReadWatch watch(m_lockPath);
    if (afterFailures) {
        m_fixture->tick();
        QVERIFY(watch.count() > 0);
    }
    QVERIFY(QFile::remove(m_storePath));
    std::jthread other([&](const std::stop_token &) {
        watch.wait();
        m_lock->unlock();
    });
    m_fixture->window().close();
    other.join();
    QVERIFY(QFile::exists(m_storePath));
}

void StoreInUseTest::theSaveThatEndsTheProgramWaitsForTwoSecondsAtMost()
{
    QElapsedTimer elapsed;
    elapsed.start();
    m_fixture->window().close();
    QVERIFY(elapsed.elapsed() >= 1900);
    QVERIFY2(elapsed.elapsed() < 10000, "the program does not end");
    QVERIFY(m_fixture->window().isHidden());
    QCOMPARE(todayBytes(), 0);
}

TOVAN_WINDOW_TEST(storeinuse_test, StoreInUseTest)
#include "storeinuse_test.moc"
