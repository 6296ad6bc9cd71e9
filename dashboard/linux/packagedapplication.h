#pragma once

#include <QStringList>

/// The ids of the desktop entries that an application of a Flatpak or a Snap may have, the
/// likeliest first, from the lines of its /proc/PID/cgroup (cgroups(7)); none for any other
/// application. Both name the systemd unit that they start an application in after it.
QStringList packagedApplicationIds(const QString &cgroups);
