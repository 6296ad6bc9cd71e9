#include "app/lumetrawindow.h"

using namespace Qt::StringLiterals;

void LumetraWindow::checkUsageAlerts()
{
    const auto alert = dueAlert(usage, settings);
    if (!alert)
        return;

    const bool critical = *alert == UsageAlert::Critical;
    (critical ? usage.criticalAlertShown : usage.warningAlertShown) = true;
    // People are told the level they chose, not what they used.
    const int level = critical ? settings.notify95 : settings.notify80;
    showToast(
        (critical ? u"Critical usage: %1% reached"_s : u"Warning usage: %1% reached"_s).arg(level));
    showDesktopMessage({DesktopMessage::Kind::Warning,
                        critical ? u"Monthly data almost finished"_s : u"High internet usage"_s,
                        u"You have used %1% of your monthly package."_s.arg(level), 4000});
}

void LumetraWindow::resetUsageCounters()
{
    usage.todayBytes = 0;
    usage.monthBytes = 0;
    resetSession();
    saveSettings();
    refreshSettingsSummary();
}
