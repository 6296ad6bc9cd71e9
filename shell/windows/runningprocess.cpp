#include "shell/runningprocess.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QString>
#include <QTimer>
#include <QWinEventNotifier>

#include <chrono>
#include <vector>
#include <windows.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A named pipe, which is gone with its process. The process makes it at once and connects it to a
// start that asks when it can answer. Until then, and while it answers another start, its one end
// is busy.

constexpr auto patienceForAnswer = 2s;
constexpr auto patienceForStart = 10s;
constexpr auto pauseBetweenTries = 10ms;

constexpr char request = 's';
constexpr char answer = 'y';

/// Closes what the system has opened.
class Handle
{
public:
    explicit Handle(HANDLE handle = nullptr)
        : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle)
    {
    }
    Handle(Handle &&other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) { }
    Handle &operator=(Handle &&other) noexcept
    {
        reset();
        m_handle = std::exchange(other.m_handle, nullptr);
        return *this;
    }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    ~Handle() { reset(); }

    explicit operator bool() const { return m_handle != nullptr; }
    HANDLE get() const { return m_handle; }

private:
    void reset()
    {
        if (m_handle)
            CloseHandle(m_handle);
    }

    HANDLE m_handle = nullptr;
};

/// The user that a process runs as, as a security identifier; empty when that is not told.
QByteArray userOf(HANDLE process)
{
    HANDLE opened = nullptr;
    if (!OpenProcessToken(process, TOKEN_QUERY, &opened))
        return {};
    const Handle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<std::byte> buffer(size);
    if (!GetTokenInformation(token.get(), TokenUser, buffer.data(), size, &size))
        return {};
    const PSID user = reinterpret_cast<const TOKEN_USER *>(buffer.data())->User.Sid;
    return {static_cast<const char *>(user), static_cast<qsizetype>(GetLengthSid(user))};
}

/// Whether the process is this user's.
bool isOurs(ULONG pid)
{
    const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
    const QByteArray user = process ? userOf(process.get()) : QByteArray();
    return !user.isEmpty() && user == userOf(GetCurrentProcess());
}

std::wstring pipeName(const QString &storeName)
{
    const QByteArray hash
        = QCryptographicHash::hash(userOf(GetCurrentProcess()) + storeName.toUtf8(),
                                   QCryptographicHash::Sha256)
              .toHex();
    return (uR"(\\.\pipe\tovan-network-monitor-)"_s + QString::fromLatin1(hash)).toStdWString();
}

/// The pipe's answering end; none when another process has it.
Handle makePipe(const std::wstring &name)
{
    return Handle(CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, 1, 1, 0, nullptr));
}

/// The pipe's asking end; none when it is busy, or there is no such pipe.
Handle openPipe(const std::wstring &name)
{
    return Handle(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_FLAG_OVERLAPPED, nullptr));
}

enum class Answer {
    Shown, ///< it has shown its window
    NotYet, ///< it is busy, still starting, or gone
    None, ///< it does not answer, or is somebody else's
};

/// Asks the process that has the pipe to show its window.
Answer ask(const std::wstring &name)
{
    const Handle pipe = openPipe(name);
    if (!pipe)
        return Answer::NotYet;
    ULONG pid = 0;
    if (!GetNamedPipeServerProcessId(pipe.get(), &pid) || !isOurs(pid))
        return Answer::None;
    // The user has just started this one, so it may give the foreground away.
    AllowSetForegroundWindow(pid);

    const Handle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    OVERLAPPED operation{};
    operation.hEvent = done.get();
    DWORD size = 0;
    if (!WriteFile(pipe.get(), &request, 1, nullptr, &operation)
        && GetLastError() != ERROR_IO_PENDING)
        return Answer::NotYet;
    GetOverlappedResult(pipe.get(), &operation, &size, TRUE);

    char reply = 0;
    if (!ReadFile(pipe.get(), &reply, 1, nullptr, &operation) && GetLastError() != ERROR_IO_PENDING)
        return Answer::NotYet;
    const auto patience = std::chrono::milliseconds(patienceForAnswer).count();
    if (WaitForSingleObject(done.get(), static_cast<DWORD>(patience)) != WAIT_OBJECT_0) {
        CancelIo(pipe.get());
        GetOverlappedResult(pipe.get(), &operation, &size, TRUE);
        return Answer::None;
    }
    return GetOverlappedResult(pipe.get(), &operation, &size, FALSE) && reply == answer
        ? Answer::Shown
        : Answer::NotYet;
}

class WindowsRunningProcess final : public RunningProcess
{
public:
    /// Without a pipe, another process has it that does not answer.
    WindowsRunningProcess(std::wstring name, Handle pipe)
        : m_name(std::move(name)),
          m_pipe(std::move(pipe)),
          m_askingEnd(m_pipe ? openPipe(m_name) : Handle()),
          m_done(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
    }

    void answerWith(ShowWindow showWindow) override
    {
        m_showWindow = std::move(showWindow);
        m_askingEnd = Handle();
        m_notifier = std::make_unique<QWinEventNotifier>(m_done.get());
        QObject::connect(m_notifier.get(), &QWinEventNotifier::activated, &m_context,
                         [this] { proceed(); });
        connect();
    }

private:
    /// What is waited for.
    enum class Step { Start, Request, End };

    /// Begins an operation whose end the notifier tells, also if it ends at once.
    void begin(Step step)
    {
        m_step = step;
        m_operation = {};
        m_operation.hEvent = m_done.get();
        ResetEvent(m_done.get());
        const bool ended = step == Step::Start
            ? ConnectNamedPipe(m_pipe.get(), &m_operation)
            : ReadFile(m_pipe.get(), &m_received, 1, nullptr, &m_operation);
        if (!ended && GetLastError() != ERROR_IO_PENDING)
            SetEvent(m_done.get());
    }

    void connect()
    {
        if (!m_pipe)
            m_pipe = makePipe(m_name);
        if (m_pipe) {
            DisconnectNamedPipe(m_pipe.get());
            begin(Step::Start);
        } else {
            // The other process may end, and then nobody would answer the next start.
            QTimer::singleShot(5s, &m_context, [this] { connect(); });
        }
    }

    void proceed()
    {
        ResetEvent(m_done.get());
        DWORD size = 0;
        const bool received = GetOverlappedResult(m_pipe.get(), &m_operation, &size, FALSE);
        switch (m_step) {
        case Step::Start:
            begin(Step::Request);
            break;
        case Step::Request:
            // Who asked while this process could not answer has gone on without it.
            if (received && size == 1 && m_received == request && send(answer)) {
                m_showWindow({});
                begin(Step::End);
            } else {
                connect();
            }
            break;
        case Step::End:
            connect(); // has read the answer, or will never
            break;
        }
    }

    bool send(char byte) const
    {
        const Handle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        OVERLAPPED operation{};
        operation.hEvent = done.get();
        DWORD size = 0;
        return (WriteFile(m_pipe.get(), &byte, 1, nullptr, &operation)
                || GetLastError() == ERROR_IO_PENDING)
            && GetOverlappedResult(m_pipe.get(), &operation, &size, TRUE);
    }

    std::wstring m_name;
    Handle m_pipe;
    Handle m_askingEnd;
    Handle m_done;
    OVERLAPPED m_operation{};
    Step m_step = Step::Start;
    char m_received = 0;
    ShowWindow m_showWindow;
    QObject m_context;
    std::unique_ptr<QWinEventNotifier> m_notifier;
};

} // namespace

std::unique_ptr<RunningProcess> becomeRunningProcess(const QString &storeName, const QByteArray &)
{
    const std::wstring name = pipeName(storeName);
    const QDeadlineTimer deadline(patienceForStart);
    Handle pipe = makePipe(name);
    while (!pipe && !deadline.hasExpired()) {
        const Answer answer = ask(name);
        if (answer == Answer::Shown)
            return nullptr;
        if (answer == Answer::None)
            break;
        Sleep(static_cast<DWORD>(std::chrono::milliseconds(pauseBetweenTries).count()));
        pipe = makePipe(name);
    }
    return std::make_unique<WindowsRunningProcess>(name, std::move(pipe));
}
