#pragma once

#include "rules/apprule.h"
#include "settings/appsettings.h"
#include "settings/usage.h"

#include <chrono>

class QSettings;

/// What outlives the program.
struct StoredState
{
    AppSettings settings;
    UsageCounters usage;
    RuleMap rules;

    bool operator==(const StoredState &) const = default;
};

/// What an empty store holds: defaults, and counters that start on `today`.
StoredState emptyState(QDate today);

/// Reads what is there and takes the defaults for the rest; numbers are moved into their bounds.
/// Counters without a stored day or month start on `today`.
StoredState readStore(QSettings &store, QDate today);

/// Makes the store hold this state, replacing the stored rules. A rule that asks for nothing is
/// left out. Only what differs from `stored` is written, which the store is known to hold; without
/// it, everything.
void writeStore(QSettings &store, const StoredState &state, const StoredState *stored = nullptr);

/// Bytes that the store's file takes at most once `state` is written.
qint64 largestStoreSize(const StoredState &state);

/// How long to wait before the store is tried again that could not be written, when the last such
/// wait was `last`: longer each time, up to a bound. The first wait follows one of 0.
std::chrono::milliseconds nextRetryDelay(std::chrono::milliseconds last);
