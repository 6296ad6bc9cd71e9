#include "settings/usage.h"

#include "settings/appsettings.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 bytesPerMegabyte = 1024ULL * 1024;
constexpr quint64 bytesPerGigabyte = 1024 * bytesPerMegabyte;

} // namespace

QString usageDayKey(QDate date)
{
    return date.toString(Qt::ISODate);
}

QString usageMonthKey(QDate date)
{
    return date.toString(u"yyyy-MM"_s);
}

void updateUsageCounters(UsageCounters &usage, quint64 tickBytes, QDate today)
{
    const QString day = usageDayKey(today);
    if (usage.dayKey != day) {
        usage.dayKey = day;
        usage.todayBytes = 0;
    }
    const QString month = usageMonthKey(today);
    if (usage.monthKey != month) {
        usage.monthKey = month;
        usage.monthBytes = 0;
        usage.warningAlertShown = false;
        usage.criticalAlertShown = false;
    }
    usage.todayBytes += tickBytes;
    usage.monthBytes += tickBytes;
}

double usedShare(quint64 monthBytes, quint64 monthlyLimitBytes)
{
    const quint64 limit = std::max<quint64>(monthlyLimitBytes, 1);
    return static_cast<double>(monthBytes) / static_cast<double>(limit);
}

qint64 usedPercent(quint64 monthBytes, quint64 monthlyLimitBytes)
{
    // The largest qint64 itself is no double; the next power of two above it is.
    constexpr double beyondQint64 = 9223372036854775808.0;
    const double percent = std::round(usedShare(monthBytes, monthlyLimitBytes) * 100);
    return percent < beyondQint64 ? static_cast<qint64>(percent)
                                  : std::numeric_limits<qint64>::max();
}

std::optional<UsageAlert> dueAlert(const UsageCounters &usage, const AppSettings &settings)
{
    if (!settings.notificationsEnabled)
        return std::nullopt;
    const double share = usedShare(usage.monthBytes, settings.monthlyLimitBytes);
    if (share >= settings.notify95 / 100.0 && !usage.criticalAlertShown)
        return UsageAlert::Critical;
    if (share >= settings.notify80 / 100.0 && !usage.warningAlertShown)
        return UsageAlert::Warning;
    return std::nullopt;
}

quint64 parseAllowance(const QString &text)
{
    return std::clamp<quint64>(text.toULongLong(), 1, 100000);
}

quint64 allowanceBytes(quint64 amount, const QString &unit)
{
    return amount * (unit == "MB"_L1 ? bytesPerMegabyte : bytesPerGigabyte);
}

quint64 wholeGigabytes(quint64 bytes)
{
    return bytes / bytesPerGigabyte;
}
