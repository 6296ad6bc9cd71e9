#pragma once

#include <QDate>
#include <QString>

#include <optional>

struct AppSettings;

/// What was used of the data allowance, counted by the calendar, in bytes.
struct UsageCounters
{
    QString dayKey; ///< day that `todayBytes` counts, as 2026-02-01; empty before the first tick
    QString monthKey; ///< month that `monthBytes` counts, as 2026-02
    quint64 todayBytes = 0; ///< down and up together
    quint64 monthBytes = 0;
    bool warningAlertShown = false; ///< raised already this month; not stored
    bool criticalAlertShown = false;

    bool operator==(const UsageCounters &) const = default;
};

/// Key of a calendar day, as 2026-02-01.
QString usageDayKey(QDate date);
/// Key of a calendar month, as 2026-02.
QString usageMonthKey(QDate date);

/// Counts one tick's bytes on `today`, after starting the day and the month anew where the keys
/// say another one. A new month may raise both alerts again.
void updateUsageCounters(UsageCounters &usage, quint64 tickBytes, QDate today);

/// Used part of the allowance as a ratio, 1.0 for all of it, not capped. An allowance of 0 counts
/// as one byte.
double usedShare(quint64 monthBytes, quint64 monthlyLimitBytes);

/// The used share in whole percent, rounded half away from zero; saturates at the type's end.
qint64 usedPercent(quint64 monthBytes, quint64 monthlyLimitBytes);

enum class UsageAlert { Warning, Critical };

/// The alert to raise now, if any. The critical one comes first: when usage jumps past both levels
/// at once, the warning is due one tick later.
std::optional<UsageAlert> dueAlert(const UsageCounters &usage, const AppSettings &settings);

/// The amount of the allowance that `text` reads as, 1 to 100000 units.
quint64 parseAllowance(const QString &text);

/// Bytes of an allowance: units of 1024^2 bytes for "MB", of 1024^3 bytes for any other unit.
quint64 allowanceBytes(quint64 amount, const QString &unit);

/// An allowance in units of 1024^3 bytes, rounded down, whatever unit it was entered in.
quint64 wholeGigabytes(quint64 bytes);
