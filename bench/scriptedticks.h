#pragma once

#include <QStringList>

#include <functional>

class LumetraWindow;

/// Lets everything that a refresh left to the event loop happen: layouts, resizing, painting.
void settle();

/// What `work` takes together with all that it leaves to the event loop, in milliseconds.
double millisecondsUntilSettled(const std::function<void()> &work);

/// Scripts what the system answers from now on: a process for each of these applications and
/// counters that grow. The sockets of a tenth of the applications change from round to round.
void scriptTick(const QStringList &applications, int round);

/// Lets the window's sampling timer fire once, now. Returns what that takes until it is painted, in
/// milliseconds.
double millisecondsOfTick(const LumetraWindow &window);
