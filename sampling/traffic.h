#pragma once

#include <QList>
#include <QPair>
#include <QString>

class SystemQueries;

/// Sums of the octet counters of all interfaces that count; wrapping at 2^64.
struct InterfaceTotals
{
    quint64 inBytes = 0;
    quint64 outBytes = 0;

    bool operator==(const InterfaceTotals &) const = default;
};

/// Interfaces by name, each with the sum of its octets in and out.
using InterfaceList = QList<QPair<QString, quint64>>;

/// Sums the interfaces that are up and not the loopback and, when a list is given, refills it with
/// them. When the interface table cannot be read the sums are 0 and the list stays as it was.
InterfaceTotals readInterfaceTotals(SystemQueries &queries, InterfaceList *interfaces = nullptr);

/// The machine's traffic since the start or the last reset, in bytes.
struct TrafficCounters
{
    /// Most entries that `history` holds.
    static constexpr int historyLimit = 48;

    quint64 currentInBytes = 0; ///< interface counters of the last tick
    quint64 currentOutBytes = 0;
    quint64 previousInBytes = 0; ///< what the next tick's growth is counted from
    quint64 previousOutBytes = 0;
    quint64 currentDownBytes = 0; ///< growth of the last tick
    quint64 currentUpBytes = 0;
    quint64 sessionBytes = 0; ///< down and up together
    quint64 peakDownBytes = 0; ///< largest growth of one tick
    quint64 peakUpBytes = 0;
    QList<quint64> history; ///< down and up together of the last ticks, oldest first
};

/// Starts counting at `totals`: what the interfaces carried before is nobody's traffic.
void setBaseline(TrafficCounters &counters, InterfaceTotals totals);

/// Growth of a counter; 0 when it shrank, as it does when an adapter is reset or goes down.
constexpr quint64 counterGrowth(quint64 current, quint64 previous)
{
    return current < previous ? 0 : current - previous;
}

/// Takes the totals of one tick into all counters. Returns the bytes of that tick, down and up
/// together.
quint64 advance(TrafficCounters &counters, InterfaceTotals totals);

/// Forgets the session: its bytes, peaks and history. The baseline and the current rates stay.
void resetSession(TrafficCounters &counters);
