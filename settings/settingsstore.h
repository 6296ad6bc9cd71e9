#pragma once

#include "rules/apprule.h"
#include "settings/appsettings.h"
#include "settings/usage.h"

class QSettings;

/// What outlives the program.
struct StoredState
{
    AppSettings settings;
    UsageCounters usage;
    RuleMap rules;

    bool operator==(const StoredState &) const = default;
};

/// Reads what is there and takes the defaults for the rest; numbers are moved into their bounds.
/// Counters without a stored day or month start on `today`.
StoredState readStore(QSettings &store, QDate today);

/// Writes everything, replacing the stored rules. A rule that asks for nothing is left out.
void writeStore(QSettings &store, const StoredState &state);

/// Bytes that the store's file takes at most once `state` is written.
qint64 largestStoreSize(const StoredState &state);
