#include "shell/endrequests.h"

#include "tests/support/testmain.h"

#include <QtTest>

#include <csignal>

namespace {

void (*handlerOf(int signal))(int)
{
    struct sigaction action
    {
    };
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

int openDescriptors()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd"))
                                .entryList(QDir::NoDotAndDotDot | QDir::System)
                                .size());
}

} // namespace

/// Signals that ask the process to end.
class EndRequestsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSignalCallsBackFromTheEventLoop_data();
    void aSignalCallsBackFromTheEventLoop();
    void manySignalsAtOnceAreOneRequest();
    void whatIsIgnoredStaysIgnored();
    void itEndsWithItsContext();
};

void EndRequestsTest::aSignalCallsBackFromTheEventLoop_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void EndRequestsTest::aSignalCallsBackFromTheEventLoop()
{
    QFETCH(int, signal);
    QObject context;
    int calls = 0;
    whenAskedToEnd(&context, [&calls] { ++calls; });
    for (int expected = 1; expected <= 2; ++expected) {
        raise(signal);
        QCOMPARE(calls, expected - 1);
        QTRY_COMPARE(calls, expected);
    }
}

void EndRequestsTest::manySignalsAtOnceAreOneRequest()
{
    QObject context;
    int calls = 0;
    whenAskedToEnd(&context, [&calls] { ++calls; });
    // More than a pipe holds.
    for (int i = 0; i < 100000; ++i)
        raise(SIGTERM);
    QTRY_COMPARE(calls, 1);
    raise(SIGTERM);
    QTRY_COMPARE(calls, 2);
}

void EndRequestsTest::whatIsIgnoredStaysIgnored()
{
    const auto before = std::signal(SIGHUP, SIG_IGN);
    {
        QObject context;
        int calls = 0;
        whenAskedToEnd(&context, [&calls] { ++calls; });
        raise(SIGHUP);
        raise(SIGTERM);
        QTRY_COMPARE(calls, 1);
        QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
    }
    QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
    std::signal(SIGHUP, before);
}

void EndRequestsTest::itEndsWithItsContext()
{
    const auto before = handlerOf(SIGTERM);
    const int descriptors = openDescriptors();
    for (int i = 0; i < 3; ++i) {
        QObject context;
        whenAskedToEnd(&context, [] {});
        QVERIFY(handlerOf(SIGTERM) != before);
        QCOMPARE(openDescriptors(), descriptors + 2);
    }
    QVERIFY(handlerOf(SIGTERM) == before);
    QCOMPARE(openDescriptors(), descriptors);
}

TOVAN_GUILESS_TEST(endrequests_test, EndRequestsTest)
#include "endrequests_test.moc"
