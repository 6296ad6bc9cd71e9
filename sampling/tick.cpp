#include "app/lumetrawindow.h"

#include "sampling/systemqueries.h"
#include "shell/minispeedwidget.h"
#include "widgets/displaytext.h"

#include <algorithm>

using namespace Qt::StringLiterals;

void LumetraWindow::tick()
{
    if (paused)
        return;

    const InterfaceTotals totals = readInterfaceTotals(*queries, &interfaces);
    samples = takeSnapshot(*queries);
    detectNewApps();

    const quint64 tickBytes = advance(traffic, totals);
    updateUsageCounters(usage, tickBytes, QDate::currentDate());
    if (miniWidget)
        miniWidget->setRates(traffic.currentDownBytes, traffic.currentUpBytes);

    // The alerts look at the usage just counted, and the save writes it.
    refreshDashboard();
    checkUsageAlerts();
    saveSettings();
}

void LumetraWindow::detectNewApps()
{
    QStringList names;
    names.reserve(samples.size());
    for (const AppSample &sample : std::as_const(samples)) {
        if (!sample.name.isEmpty())
            names.append(sample.name);
    }
    std::ranges::sort(names);

    if (knownAppNamesReady) {
        const auto isNew = [this](const QString &name) {
            return !std::ranges::binary_search(knownAppNames, name);
        };
        const auto found = std::ranges::find_if(std::as_const(names), isNew);
        if (found != names.cend())
            showToast("New network app: "_L1 + displayedName(*found));
    }
    knownAppNames = std::move(names);
    knownAppNamesReady = true;
}
