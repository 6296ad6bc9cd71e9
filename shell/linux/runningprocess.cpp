#include "shell/runningprocess.h"

#include "sampling/linux/filedescriptor.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <memory>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>

using namespace std::chrono_literals;

namespace {

// A socket of the abstract namespace, unix(7): it is in no file system, and its name is free again
// as soon as the process that has bound it is gone. The process binds it at once and listens when
// it can answer. Who is refused knows that the other one is still starting.

constexpr auto patienceForAnswer = 2s;
constexpr auto patienceForStart = 10s;
constexpr auto pauseBetweenTries = 10ms;
constexpr auto pauseBetweenBinds = 5s;

// A request is its first byte and the activation of the start that asks.
constexpr char showRequest = 's';
constexpr char shownReply = 'y';
constexpr qsizetype longestActivation = 4096;

/// The name of the socket, which all processes of a user and a store know.
struct Address
{
    explicit Address(const QString &storeName)
    {
        // A path is the same file only below the same root, and these sockets know of none.
        struct stat root
        {
        };
        ::stat("/", &root);
        const QByteArray store = QByteArray::number(qulonglong{root.st_dev}) + ':'
            + QByteArray::number(qulonglong{root.st_ino}) + ':' + storeName.toUtf8();
        // However long that is, its hash has room in a name.
        const QByteArray hash = QCryptographicHash::hash(store, QCryptographicHash::Sha256).toHex();
        const QByteArray name
            = "tovan-network-monitor-" + QByteArray::number(::geteuid()) + '-' + hash;
        socket.sun_family = AF_UNIX;
        // The null byte before the name makes it an abstract one.
        std::ranges::copy(name, socket.sun_path + 1);
        size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1
                                      + static_cast<std::size_t>(name.size()));
    }
    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&socket); }

    sockaddr_un socket{};
    socklen_t size = 0;
};

FileDescriptor openSocket()
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// The socket, bound to this process; none when another one has it.
FileDescriptor bindSocket(const Address &address)
{
    FileDescriptor socket = openSocket();
    if (socket && ::bind(socket.get(), address.get(), address.size) != 0)
        socket.reset();
    return socket;
}

/// Whether the process at the other end is this user's.
bool isOurs(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0
        && peer.uid == ::geteuid();
}

bool waitFor(int socket, QDeadlineTimer deadline)
{
    pollfd waiting{socket, POLLIN, 0};
    int ready = 0;
    do {
        ready = ::poll(&waiting, 1, static_cast<int>(deadline.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

enum class Answer {
    Shown, ///< it has shown its window
    NotYet, ///< nobody listens: it is still starting, or gone
    None, ///< it does not answer, or is somebody else's
};

/// Asks the process that has the socket to show its window.
Answer ask(const Address &address, const QByteArray &activation)
{
    const FileDescriptor socket = openSocket();
    if (!socket)
        return Answer::None;
    if (::connect(socket.get(), address.get(), address.size) != 0)
        return errno == ECONNREFUSED ? Answer::NotYet : Answer::None;
    if (!isOurs(socket.get()))
        return Answer::None;

    const QByteArray message
        = showRequest + activation.first(std::min(activation.size(), longestActivation));
    const auto size = static_cast<std::size_t>(message.size());
    if (::send(socket.get(), message.constData(), size, MSG_NOSIGNAL) < 0)
        return Answer::NotYet;
    if (!waitFor(socket.get(), QDeadlineTimer(patienceForAnswer)))
        return Answer::None;
    char reply = 0;
    // Without a reply the other process has ended meanwhile.
    return ::recv(socket.get(), &reply, 1, 0) == 1 && reply == shownReply ? Answer::Shown
                                                                          : Answer::NotYet;
}

class LinuxRunningProcess final : public RunningProcess
{
public:
    /// Without a socket, another process has it that does not answer.
    LinuxRunningProcess(Address address, FileDescriptor socket)
        : m_address(address),
          m_socket(std::move(socket))
    {
    }

    void answerWith(ShowWindow showWindow) override
    {
        m_showWindow = std::move(showWindow);
        listen();
    }

private:
    void listen()
    {
        if (!m_socket)
            m_socket = bindSocket(m_address);
        if (!m_socket || ::listen(m_socket.get(), SOMAXCONN) != 0) {
            // The other process may end, and then nobody would answer the next start.
            QTimer::singleShot(pauseBetweenBinds, &m_context, [this] { listen(); });
            return;
        }
        m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &m_context,
                         [this] { accept(); });
    }

    void accept()
    {
        const auto socket = std::make_shared<FileDescriptor>(
            ::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!*socket) {
            // Without a descriptor left the event loop would do nothing but come here.
            m_notifier->setEnabled(false);
            QTimer::singleShot(1s, m_notifier.get(), [this] { m_notifier->setEnabled(true); });
            return;
        }
        if (!isOurs(socket->get()))
            return;
        auto *notifier = new QSocketNotifier(socket->get(), QSocketNotifier::Read, &m_context);
        QObject::connect(notifier, &QSocketNotifier::activated, &m_context,
                         [this, notifier, socket] {
                             notifier->setEnabled(false);
                             notifier->deleteLater();
                             answerRequest(socket->get());
                         });
    }

    void answerRequest(int socket)
    {
        std::array<char, longestActivation + 1> message{};
        const ssize_t size = ::recv(socket, message.data(), message.size(), 0);
        // Who asked while this process could not answer has gone on without it.
        pollfd peer{socket, POLLRDHUP, 0};
        if (size < 1 || message.front() != showRequest || ::poll(&peer, 1, 0) != 0)
            return;
        m_showWindow(QByteArray(message.data() + 1, static_cast<qsizetype>(size) - 1));
        ::send(socket, &shownReply, 1, MSG_NOSIGNAL);
    }

    Address m_address;
    FileDescriptor m_socket;
    ShowWindow m_showWindow;
    QObject m_context;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace

std::unique_ptr<RunningProcess> becomeRunningProcess(const QString &storeName,
                                                     const QByteArray &activation)
{
    const Address address(storeName);
    const QDeadlineTimer deadline(patienceForStart);
    FileDescriptor socket = bindSocket(address);
    while (!socket && !deadline.hasExpired()) {
        const Answer answer = ask(address, activation);
        if (answer == Answer::Shown)
            return nullptr;
        if (answer == Answer::None)
            break;
        std::this_thread::sleep_for(pauseBetweenTries);
        socket = bindSocket(address);
    }
    return std::make_unique<LinuxRunningProcess>(address, std::move(socket));
}
