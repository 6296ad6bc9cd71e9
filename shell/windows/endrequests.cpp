#include "shell/endrequests.h"

#include <QWinEventNotifier>

#include <atomic>
#include <windows.h>

namespace {

// The system calls the handler on a thread of its own and gives it nothing but the event. Null
// while nobody wants to know.
std::atomic<HANDLE> endRequest = nullptr;

BOOL WINAPI askToEnd(DWORD event)
{
    if (!SetEvent(endRequest))
        return FALSE;
    // When the handler of these returns, the process is ended (SetConsoleCtrlHandler). It ends by
    // itself as soon as it has saved.
    if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

/// The console events' own handler while it lives.
class EndRequests : public QObject
{
public:
    EndRequests(QObject *context, HANDLE event, std::function<void()> callback)
        : QObject(context),
          m_notifier(event)
    {
        connect(&m_notifier, &QWinEventNotifier::activated, this,
                [event, callback = std::move(callback)] {
                    ResetEvent(event);
                    callback();
                });
        endRequest = event;
        SetConsoleCtrlHandler(askToEnd, TRUE);
    }
    ~EndRequests() override
    {
        SetConsoleCtrlHandler(askToEnd, FALSE);
        endRequest = nullptr;
        m_notifier.setEnabled(false);
        CloseHandle(m_notifier.handle());
    }
    EndRequests(const EndRequests &) = delete;
    EndRequests &operator=(const EndRequests &) = delete;

private:
    QWinEventNotifier m_notifier;
};

} // namespace

void whenAskedToEnd(QObject *context, std::function<void()> callback)
{
    if (HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr))
        new EndRequests(context, event, std::move(callback));
}
