#include "shell/endrequests.h"

#include "sampling/linux/filedescriptor.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A signal handler is given nothing and may do little, signal-safety(7): it writes into a pipe,
// whose other end the event loop watches. -1 while nobody wants to know.
std::atomic<int> writeEnd = -1;
static_assert(std::atomic<int>::is_always_lock_free);

constexpr std::array signalsToEnd{SIGTERM, SIGINT, SIGHUP};

void askToEnd(int)
{
    const int error = errno;
    // A pipe that is full has asked already.
    [[maybe_unused]] const ssize_t written = write(writeEnd, "", 1);
    errno = error;
}

/// The signals' own handler while it lives.
class EndRequests : public QObject
{
public:
    EndRequests(QObject *context, FileDescriptor readEnd, FileDescriptor otherEnd,
                std::function<void()> callback)
        : QObject(context),
          m_readEnd(std::move(readEnd)),
          m_writeEnd(std::move(otherEnd)),
          m_notifier(m_readEnd.get(), QSocketNotifier::Read)
    {
        connect(&m_notifier, &QSocketNotifier::activated, this,
                [this, callback = std::move(callback)] {
                    std::array<char, 64> requests{};
                    while (read(m_readEnd.get(), requests.data(), requests.size()) > 0) { }
                    callback();
                });
        writeEnd = m_writeEnd.get();
        for (std::size_t i = 0; i < signalsToEnd.size(); ++i) {
            struct sigaction action
            {
            };
            action.sa_handler = askToEnd;
            action.sa_flags = SA_RESTART;
            sigaction(signalsToEnd.at(i), nullptr, &m_before.at(i));
            if (m_before.at(i).sa_handler != SIG_IGN)
                sigaction(signalsToEnd.at(i), &action, nullptr);
        }
    }

    ~EndRequests() override
    {
        for (std::size_t i = 0; i < signalsToEnd.size(); ++i)
            sigaction(signalsToEnd.at(i), &m_before.at(i), nullptr);
        writeEnd = -1;
    }
    EndRequests(const EndRequests &) = delete;
    EndRequests &operator=(const EndRequests &) = delete;

private:
    FileDescriptor m_readEnd;
    FileDescriptor m_writeEnd;
    QSocketNotifier m_notifier;
    std::array<struct sigaction, signalsToEnd.size()> m_before{};
};

} // namespace

void whenAskedToEnd(QObject *context, std::function<void()> callback)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0)
        new EndRequests(context, FileDescriptor(ends[0]), FileDescriptor(ends[1]),
                        std::move(callback));
}
