#pragma once

#include <QByteArray>

#include <functional>
#include <memory>

class QString;

/// The one process that runs for a user and a store, as long as this object lives. It keeps nothing
/// on the disk; a process that ends, however that may be, runs no longer.
class RunningProcess
{
public:
    /// The activation of the start that asks, see shell/activation.h.
    using ShowWindow = std::function<void(const QByteArray &activation)>;

    RunningProcess() = default;
    RunningProcess(const RunningProcess &) = delete;
    RunningProcess &operator=(const RunningProcess &) = delete;
    virtual ~RunningProcess() = default;

    /// From now on other starts are answered, from the event loop. Needs an application object.
    virtual void answerWith(ShowWindow showWindow) = 0;
};

/// Makes this process the running one of this user and of the store of this name, before there is
/// an application object. Null when there is one already, which was given `activation` and has
/// shown its window: nothing is left to do then. A process that is asked and does not answer within
/// two seconds is passed over; one that is still starting, and so cannot be asked, is waited for
/// for ten.
std::unique_ptr<RunningProcess> becomeRunningProcess(const QString &storeName,
                                                     const QByteArray &activation);
