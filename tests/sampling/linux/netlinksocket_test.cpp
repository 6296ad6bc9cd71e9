#include "sampling/linux/netlinkdata.h"
#include "sampling/linux/netlinksocket.h"
#include "tests/sampling/linux/support/fakekernel.h"
#include "tests/support/testmain.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <QtTest>

#include <csignal>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr quint16 rowType = RTM_NEWLINK;

QByteArray payloadOf(const NetlinkMessage &message)
{
    return QByteArray(reinterpret_cast<const char *>(message.payload.data()),
                      static_cast<qsizetype>(message.payload.size()));
}

/// What a dump over `socket` brings; no value when it fails.
std::optional<QByteArrayList> dumpOver(NetlinkSocket &socket)
{
    QByteArrayList rows;
    const bool complete = socket.dump(
        RTM_GETLINK, {}, [&] { rows.clear(); },
        [&](const NetlinkMessage &message) { rows.append(payloadOf(message)); });
    if (!complete)
        return std::nullopt;
    return rows;
}

/// Receives one dump of sequence 1 and port 0 from a peer that says `datagrams` and hangs up.
DumpEnd receive(const QByteArrayList &datagrams, QByteArrayList &rows)
{
    std::vector<std::byte> buffer(4096);
    FakeKernel kernel;
    const FileDescriptor peer = kernel.connectPeer();
    for (const QByteArray &datagram : datagrams)
        kernel.say(datagram);
    kernel.hangUp();
    return receiveDump(peer.get(), 1, 0, buffer,
                       [&rows](const NetlinkMessage &message) { rows.append(payloadOf(message)); });
}

} // namespace

Q_DECLARE_METATYPE(DumpEnd)

class NetlinkSocketTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDumpOfSeveralDatagramsIsReceivedInOrder()
    {
        QByteArrayList rows;
        QCOMPARE(receive({FakeKernel::message(rowType, 1, "one")
                              + FakeKernel::message(rowType, 1, "two"),
                          FakeKernel::message(rowType, 1, "three"), FakeKernel::done(1)},
                         rows),
                 DumpEnd::Complete);
        QCOMPARE(rows, (QByteArrayList{"one", "two", "three"}));
    }

    void whatCannotBeHadWholeIsAFailure_data()
    {
        QTest::addColumn<QByteArrayList>("datagrams");
        QTest::addColumn<DumpEnd>("end");
        const QByteArray row = FakeKernel::message(rowType, 1, "row");

        QTest::newRow("the kernel refuses")
            << QByteArrayList{FakeKernel::message(NLMSG_ERROR, 1, QByteArray(20, '\xff'))}
            << DumpEnd::Failed;
        QTest::newRow("an error half-way")
            << QByteArrayList{row, FakeKernel::message(NLMSG_ERROR, 1, QByteArray(20, '\xff'))}
            << DumpEnd::Failed;
        QTest::newRow("the end carries an error")
            << QByteArrayList{row, FakeKernel::done(1, -ENOBUFS)} << DumpEnd::Failed;
        QTest::newRow("messages were lost")
            << QByteArrayList{row, FakeKernel::message(NLMSG_OVERRUN, 1)} << DumpEnd::Failed;
        QTest::newRow("no end comes") << QByteArrayList{row} << DumpEnd::Failed;
        QTest::newRow("nothing comes") << QByteArrayList{} << DumpEnd::Failed;
        QTest::newRow("half a header") << QByteArrayList{row.first(8)} << DumpEnd::Failed;
        QTest::newRow("a message longer than its datagram")
            << QByteArrayList{FakeKernel::message(rowType, 1, QByteArray(64, 'x')).first(40)}
            << DumpEnd::Failed;
        QTest::newRow("a message shorter than its header")
            << QByteArrayList{QByteArray(16, '\1')} << DumpEnd::Failed;
        QTest::newRow("a message of no length")
            << QByteArrayList{QByteArray(16, '\0')} << DumpEnd::Failed;
        QTest::newRow("the list changed meanwhile")
            << QByteArrayList{FakeKernel::message(rowType, 1, "row", NLM_F_MULTI | NLM_F_DUMP_INTR),
                              FakeKernel::done(1)}
            << DumpEnd::Interrupted;
        QTest::newRow("the list changed at the end")
            << QByteArrayList{row, FakeKernel::done(1, 0, NLM_F_MULTI | NLM_F_DUMP_INTR)}
            << DumpEnd::Interrupted;
        QTest::newRow("a datagram too large")
            << QByteArrayList{FakeKernel::message(rowType, 1, QByteArray(5000, 'x'))}
            << DumpEnd::Truncated;
    }

    void whatCannotBeHadWholeIsAFailure()
    {
        QFETCH(QByteArrayList, datagrams);
        QByteArrayList rows;
        QTEST(receive(datagrams, rows), "end");
    }

    void repliesToAnotherRequestArePassedOver()
    {
        QByteArrayList rows;
        QCOMPARE(receive({FakeKernel::message(rowType, 7, "late") + FakeKernel::done(7),
                          FakeKernel::message(rowType, 1, "for another", NLM_F_MULTI, 99),
                          FakeKernel::message(NLMSG_NOOP, 1),
                          FakeKernel::message(rowType, 1, "row"), FakeKernel::done(1)},
                         rows),
                 DumpEnd::Complete);
        QCOMPARE(rows, QByteArrayList{"row"});
    }

    void aTruncatedDatagramEnlargesTheBuffer()
    {
        FakeKernel kernel;
        const FileDescriptor peer = kernel.connectPeer();
        kernel.say(FakeKernel::message(rowType, 1, QByteArray(5000, 'x')));
        std::vector<std::byte> buffer(64);
        QCOMPARE(receiveDump(peer.get(), 1, 0, buffer, [](const NetlinkMessage &) {}),
                 DumpEnd::Truncated);
        QCOMPARE(buffer.size(), std::size_t(5016));
    }

    void anInterruptedDumpIsAskedForAgain()
    {
        FakeKernel kernel;
        NetlinkSocket socket([&kernel] {
            FileDescriptor peer = kernel.connectPeer();
            kernel.say(FakeKernel::message(rowType, 1, "stale", NLM_F_MULTI | NLM_F_DUMP_INTR)
                       + FakeKernel::done(1));
            kernel.say(FakeKernel::message(rowType, 2, "fresh") + FakeKernel::done(2));
            return peer;
        });
        QCOMPARE(dumpOver(socket), QByteArrayList{"fresh"});
    }

    void aListThatNeverStopsChangingIsTakenAsItWasLastSeen()
    {
        FakeKernel kernel;
        NetlinkSocket socket([&kernel] {
            FileDescriptor peer = kernel.connectPeer();
            for (quint32 sequence = 1; sequence < 50; ++sequence)
                kernel.say(
                    FakeKernel::message(rowType, sequence, "row " + QByteArray::number(sequence))
                    + FakeKernel::done(sequence, 0, NLM_F_MULTI | NLM_F_DUMP_INTR));
            return peer;
        });
        const auto first = dumpOver(socket);
        QVERIFY(first);
        QCOMPARE(first->size(), 1);
        const int attempts = first->front().mid(4).toInt();
        QCOMPARE_GT(attempts, 1);
        QCOMPARE_LT(attempts, 10);
        // The socket is still good for the next one.
        QCOMPARE(dumpOver(socket), QByteArrayList{"row " + QByteArray::number(2 * attempts)});
    }

    void aBufferTooSmallInTheMidstOfChangesIsNoFailure()
    {
        FakeKernel kernel;
        const QByteArray large(100'000, 'x');
        quint32 sequence = 0;
        NetlinkSocket socket([&] {
            FileDescriptor peer = kernel.connectPeer();
            // The list grows while it keeps changing.
            const quint32 truncated = sequence == 0 ? 5 : 0;
            while (++sequence != truncated && sequence < 20)
                kernel.say(FakeKernel::message(rowType, sequence, "row")
                           + FakeKernel::done(sequence, 0, NLM_F_MULTI | NLM_F_DUMP_INTR));
            kernel.say(FakeKernel::message(rowType, sequence, large));
            return peer;
        });
        QCOMPARE(dumpOver(socket), QByteArrayList{"row"});
    }

    void aDumpTooLargeForTheBufferIsAskedForAgainOnAFreshSocket()
    {
        FakeKernel kernel;
        quint32 openings = 0;
        const QByteArray large(100'000, 'x');
        NetlinkSocket socket([&] {
            FileDescriptor peer = kernel.connectPeer();
            ++openings;
            kernel.say(FakeKernel::message(rowType, openings, large));
            kernel.say(FakeKernel::done(openings));
            return peer;
        });
        QCOMPARE(dumpOver(socket), QByteArrayList{large});
        QCOMPARE(openings, quint32(2));
    }

    void afterAFailureTheNextDumpStartsOnAFreshSocket()
    {
        FakeKernel kernel;
        quint32 openings = 0;
        NetlinkSocket socket([&] {
            FileDescriptor peer = kernel.connectPeer();
            ++openings;
            if (openings == 1)
                kernel.say(FakeKernel::message(NLMSG_ERROR, 1, QByteArray(20, '\xff'))
                           + FakeKernel::done(1));
            // What the failed dump left behind would be taken for the next one's rows.
            kernel.say(FakeKernel::message(rowType, 2, "row") + FakeKernel::done(2));
            return peer;
        });
        QCOMPARE(dumpOver(socket), std::nullopt);
        QCOMPARE(dumpOver(socket), QByteArrayList{"row"});
        QCOMPARE(openings, quint32(2));
    }

    void aRefusedSocketIsAFailedDumpAndIsTriedAgain()
    {
        int openings = 0;
        NetlinkSocket socket([&] {
            ++openings;
            return FileDescriptor{};
        });
        QCOMPARE(dumpOver(socket), std::nullopt);
        QCOMPARE(dumpOver(socket), std::nullopt);
        QCOMPARE(openings, 2);
    }

    void aSignalDuringADumpDoesNotEndIt()
    {
        struct sigaction action
        {
        };
        action.sa_handler = [](int) {};
        struct sigaction before
        {
        };
        // Without SA_RESTART, so that the waiting call ends with EINTR.
        QCOMPARE(::sigaction(SIGUSR1, &action, &before), 0);

        FakeKernel kernel;
        const FileDescriptor peer = kernel.connectPeer();
        std::vector<std::byte> buffer(4096);
        const pthread_t receiver = ::pthread_self();
        std::jthread interrupter([&kernel, receiver](const std::stop_token &) {
            // Signals until it is blocked in the call cannot be told from before it; many are sent.
            for (int i = 0; i < 200; ++i) {
                ::pthread_kill(receiver, SIGUSR1);
                std::this_thread::yield();
            }
            kernel.say(FakeKernel::message(rowType, 1, "row") + FakeKernel::done(1));
        });
        int rows = 0;
        const DumpEnd end
            = receiveDump(peer.get(), 1, 0, buffer, [&](const NetlinkMessage &) { ++rows; });
        interrupter.join();
        QCOMPARE(::sigaction(SIGUSR1, &before, nullptr), 0);
        QCOMPARE(end, DumpEnd::Complete);
        QCOMPARE(rows, 1);
    }

    void theKernelAnswersARealDump()
    {
        NetlinkSocket socket([] { return openNetlinkSocket(NETLINK_ROUTE); });
        ifinfomsg request{};
        for (int round = 0; round < 3; ++round) {
            int rows = 0;
            QVERIFY(socket.dump(
                RTM_GETLINK, std::as_bytes(std::span(&request, 1)), [&] { rows = 0; },
                [&](const NetlinkMessage &) { ++rows; }));
            QCOMPARE_GE(rows, 1);
        }
    }

    void aRequestThatTheKernelDoesNotKnowIsAFailure()
    {
        NetlinkSocket socket([] { return openNetlinkSocket(NETLINK_SOCK_DIAG); });
        ifinfomsg request{};
        QVERIFY(!socket.dump(
            RTM_GETLINK, std::as_bytes(std::span(&request, 1)), [] {},
            [](const NetlinkMessage &) {}));
    }

    void attributesEndAtTheFirstMalformedOne()
    {
        const auto attribute = [](quint16 length, quint16 type, const QByteArray &value) {
            const nlattr header{length, type};
            return QByteArray(reinterpret_cast<const char *>(&header), sizeof header) + value;
        };
        const auto typesIn = [](const QByteArray &bytes) {
            QList<quint16> types;
            forEachAttribute(
                std::as_bytes(std::span(bytes.constData(), static_cast<std::size_t>(bytes.size()))),
                [&](std::uint16_t type, std::span<const std::byte>) { types.append(type); });
            return types;
        };
        const QByteArray good = attribute(7, 3, QByteArray("abc\0", 4));
        QCOMPARE(typesIn(good + good), (QList<quint16>{3, 3}));
        QCOMPARE(typesIn(good + attribute(40, 4, "short")), (QList<quint16>{3}));
        QCOMPARE(typesIn(good + attribute(0, 4, "none")), (QList<quint16>{3}));
        QCOMPARE(typesIn(good + QByteArray("\1\1", 2)), (QList<quint16>{3}));
        QCOMPARE(typesIn(attribute(7, 3 | NLA_F_NESTED, QByteArray("abc", 3))),
                 (QList<quint16>{3}));
    }
};

TOVAN_GUILESS_TEST(netlinksocket_test, NetlinkSocketTest)
#include "netlinksocket_test.moc"
