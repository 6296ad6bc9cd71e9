#include "sampling/traffic.h"

#include "sampling/systemqueries.h"

#include <algorithm>

InterfaceTotals readInterfaceTotals(SystemQueries &queries, InterfaceList *interfaces)
{
    const auto table = queries.interfaceTable();
    if (!table)
        return {};

    if (interfaces)
        interfaces->clear();

    InterfaceTotals totals;
    for (const InterfaceRow &row : *table) {
        if (row.loopback || !row.up)
            continue;
        totals.inBytes += row.inOctets;
        totals.outBytes += row.outOctets;
        if (interfaces) {
            const std::string &label = row.alias.empty() ? row.description : row.alias;
            interfaces->append({QString::fromStdString(label), row.inOctets + row.outOctets});
        }
    }
    return totals;
}

void setBaseline(TrafficCounters &counters, InterfaceTotals totals)
{
    counters.currentInBytes = counters.previousInBytes = totals.inBytes;
    counters.currentOutBytes = counters.previousOutBytes = totals.outBytes;
}

quint64 advance(TrafficCounters &counters, InterfaceTotals totals)
{
    const quint64 down = counterGrowth(totals.inBytes, counters.previousInBytes);
    const quint64 up = counterGrowth(totals.outBytes, counters.previousOutBytes);
    setBaseline(counters, totals);

    const quint64 total = down + up;
    counters.sessionBytes += total;
    counters.peakDownBytes = std::max(counters.peakDownBytes, down);
    counters.peakUpBytes = std::max(counters.peakUpBytes, up);
    counters.history.append(total);
    if (counters.history.size() > TrafficCounters::historyLimit)
        counters.history.removeFirst();
    counters.currentDownBytes = down;
    counters.currentUpBytes = up;
    return total;
}

void resetSession(TrafficCounters &counters)
{
    counters.sessionBytes = 0;
    counters.peakDownBytes = 0;
    counters.peakUpBytes = 0;
    counters.history.clear();
}
