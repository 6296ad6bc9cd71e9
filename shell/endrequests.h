#pragma once

#include <functional>

class QObject;

/// Calls back, from the event loop, whenever the system asks the process to end: by SIGTERM, SIGINT
/// or SIGHUP, or by an event of the Windows console that it is attached to. Without a call the
/// process would end at once. What was asked to be ignored, as nohup(1) does, stays ignored. Ends
/// with `context`; one context of a process at a time.
void whenAskedToEnd(QObject *context, std::function<void()> callback);
