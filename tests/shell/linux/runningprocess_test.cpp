#include "shell/runningprocess.h"

#include "sampling/linux/filedescriptor.h"
#include "tests/support/testmain.h"

#include <QtTest>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr uid_t anotherUser = 65534;

/// Lets a child of this process answer a question, as another user if that is wished.
class Child
{
public:
    explicit Child(const std::function<bool()> &question, bool otherUser = false) : m_pid(::fork())
    {
        if (m_pid != 0)
            return;
        if (otherUser && (::setgid(anotherUser) != 0 || ::setuid(anotherUser) != 0))
            ::_exit(2);
        ::_exit(question() ? 1 : 0);
    }
    bool saysYes() const
    {
        int status = 0;
        return ::waitpid(m_pid, &status, 0) == m_pid && WIFEXITED(status)
            && WEXITSTATUS(status) == 1;
    }

private:
    pid_t m_pid;
};

/// The name that this process has bound. Whoever else runs has names of the same kind.
QByteArray boundName()
{
    QByteArrayList names;
    const QStringList descriptors = QDir(u"/proc/self/fd"_s).entryList(QDir::System);
    for (const QString &descriptor : descriptors) {
        sockaddr_un address{};
        socklen_t size = sizeof address;
        if (::getsockname(descriptor.toInt(), reinterpret_cast<sockaddr *>(&address), &size) != 0
            || address.sun_family != AF_UNIX)
            continue;
        const QByteArray path(address.sun_path,
                              static_cast<qsizetype>(size - offsetof(sockaddr_un, sun_path)));
        if (path.startsWith("\0tovan-network-monitor-"_ba))
            names.append(path.mid(1));
    }
    if (names.size() != 1)
        qFatal("%d names are bound", int(names.size()));
    return names.first();
}

struct NamedSocket
{
    explicit NamedSocket(const QByteArray &name)
        : socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0))
    {
        address.sun_family = AF_UNIX;
        std::ranges::copy(name, address.sun_path + 1);
        size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1
                                      + static_cast<size_t>(name.size()));
    }
    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&address); }

    FileDescriptor socket;
    sockaddr_un address{};
    socklen_t size = 0;
};

} // namespace

/// One process for a user and a store.
class RunningProcessTest : public QObject
{
    Q_OBJECT

    /// A name that no other test has.
    static QString newStore()
    {
        static int stores = 0;
        return u"/%1/%2/"_s.arg(::getpid()).arg(++stores) + QString(300, u'ü');
    }
    static bool isAlreadyRunning(const QString &store, const QByteArray &activation = {})
    {
        return becomeRunningProcess(store, activation) == nullptr;
    }

private Q_SLOTS:
    void theActivationIsHandedOver_data();
    void theActivationIsHandedOver();
    void aStoreIsFreeAgainWhenItsProcessIsGone();
    void storesAreApart();
    void whoIsStillStartingIsWaitedFor();
    void usersAreApart();
    void anotherUsersProcessIsNotAsked();
    void anotherUsersRequestIsNotAnswered();
    void rubbishIsNotAnswered_data();
    void rubbishIsNotAnswered();
};

void RunningProcessTest::theActivationIsHandedOver_data()
{
    QTest::addColumn<QByteArray>("activation");
    QTest::addColumn<QByteArray>("received");
    QTest::newRow("none") << QByteArray() << QByteArray();
    QTest::newRow("some") << QByteArray("id\ntoken \0\xff", 11)
                          << QByteArray("id\ntoken \0\xff", 11);
    QTest::newRow("too much") << QByteArray(100000, 'x') << QByteArray(4096, 'x');
}

void RunningProcessTest::theActivationIsHandedOver()
{
    QFETCH(QByteArray, activation);
    QFETCH(QByteArray, received);
    const QString store = newStore();
    const auto process = becomeRunningProcess(store, {});
    QVERIFY(process);
    QByteArrayList activations;
    process->answerWith([&](const QByteArray &given) { activations.append(given); });
    for (int start = 1; start <= 3; ++start) {
        const Child second([&] { return isAlreadyRunning(store, activation); });
        QTRY_COMPARE(activations, QByteArrayList(start, received));
        QVERIFY(second.saysYes());
    }
}

void RunningProcessTest::aStoreIsFreeAgainWhenItsProcessIsGone()
{
    const QString store = newStore();
    for (int round = 0; round < 2; ++round) {
        const auto process = becomeRunningProcess(store, {});
        QVERIFY(process);
        process->answerWith([](const QByteArray &) {});
    }
    QVERIFY(!Child([&] { return isAlreadyRunning(store); }).saysYes());
}

void RunningProcessTest::storesAreApart()
{
    const auto process = becomeRunningProcess(newStore(), {});
    process->answerWith([](const QByteArray &) { QFAIL("was asked"); });
    const Child other([] { return isAlreadyRunning(newStore()); });
    QVERIFY(!other.saysYes());
}

void RunningProcessTest::whoIsStillStartingIsWaitedFor()
{
    const QString store = newStore();
    const auto process = becomeRunningProcess(store, {});
    const Child second([&] { return isAlreadyRunning(store); });
    // Longer than one that runs is given.
    QTest::qWait(3000);
    int shown = 0;
    process->answerWith([&shown](const QByteArray &) { ++shown; });
    QTRY_COMPARE(shown, 1);
    QVERIFY(second.saysYes());
}

void RunningProcessTest::usersAreApart()
{
    if (::geteuid() != 0)
        return; // nobody else can become another user
    const QString store = newStore();
    const auto process = becomeRunningProcess(store, {});
    process->answerWith([](const QByteArray &) { QFAIL("was asked"); });
    QVERIFY(!Child([&] { return isAlreadyRunning(store); }, true).saysYes());
}

void RunningProcessTest::anotherUsersProcessIsNotAsked()
{
    if (::geteuid() != 0)
        return;
    const QString store = newStore();
    auto process = becomeRunningProcess(store, {});
    const QByteArray name = boundName();
    process.reset();

    int ready[2]{};
    QCOMPARE(::pipe(ready), 0);
    const Child squatter(
        [&] {
            const NamedSocket socket(name);
            if (::bind(socket.socket.get(), socket.get(), socket.size) != 0
                || ::listen(socket.socket.get(), 1) != 0 || ::write(ready[1], "", 1) != 1)
                return false;
            const FileDescriptor guest(::accept(socket.socket.get(), nullptr, nullptr));
            char request = 0;
            return ::recv(guest.get(), &request, 1, 0) == 0;
        },
        true);
    // So that the end of a child which could not bind is seen.
    ::close(ready[1]);
    char byte = 0;
    QCOMPARE(::read(ready[0], &byte, 1), ssize_t(1));
    process = becomeRunningProcess(store, "secret");
    QVERIFY(process);
    QVERIFY(squatter.saysYes());
    ::close(ready[0]);
}

void RunningProcessTest::anotherUsersRequestIsNotAnswered()
{
    if (::geteuid() != 0)
        return;
    const auto process = becomeRunningProcess(newStore(), {});
    process->answerWith([](const QByteArray &) { QFAIL("was asked"); });
    const QByteArray name = boundName();
    const Child other(
        [&] {
            const NamedSocket socket(name);
            char reply = 0;
            if (::connect(socket.socket.get(), socket.get(), socket.size) != 0)
                return false;
            ::send(socket.socket.get(), "s", 1, MSG_NOSIGNAL);
            return ::recv(socket.socket.get(), &reply, 1, 0) <= 0;
        },
        true);
    QTest::qWait(500);
    QVERIFY(other.saysYes());
}

void RunningProcessTest::rubbishIsNotAnswered_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("another byte") << QByteArray("x");
    QTest::newRow("much") << QByteArray(100000, 'x');
}

void RunningProcessTest::rubbishIsNotAnswered()
{
    QFETCH(QByteArray, request);
    const QString store = newStore();
    const auto process = becomeRunningProcess(store, {});
    int shown = 0;
    process->answerWith([&shown](const QByteArray &) { ++shown; });
    const NamedSocket socket(boundName());
    QCOMPARE(::connect(socket.socket.get(), socket.get(), socket.size), 0);
    QCOMPARE(
        ::send(socket.socket.get(), request.constData(), static_cast<size_t>(request.size()), 0),
        ssize_t(request.size()));
    pollfd answer{socket.socket.get(), POLLIN, 0};
    QTRY_VERIFY(::poll(&answer, 1, 0) == 1);
    char reply = 0;
    QCOMPARE(::recv(socket.socket.get(), &reply, 1, 0), ssize_t(0));
    QCOMPARE(shown, 0);

    // And the next one is answered as ever.
    const Child second([&] { return isAlreadyRunning(store); });
    QTRY_COMPARE(shown, 1);
    QVERIFY(second.saysYes());
}

TOVAN_GUILESS_TEST(runningprocess_test, RunningProcessTest)
#include "runningprocess_test.moc"
