#pragma once

#include "rules/apprule.h"

#include <functional>

class QSettings;
class QVariant;

/// How the keys of a store are changed.
struct StoreWriter
{
    std::function<void(const QString &key, const QVariant &value)> set;
    std::function<void(const QString &key)> remove; ///< with all keys below it
};

/// Reads the rules in the store's array. Speeds that it does not have are `defaultLimitKbps`.
RuleMap readRules(QSettings &store, int defaultLimitKbps);

/// Makes `store` hold these rules and no others, through `writer`. A rule that asks for nothing is
/// left out. A registry has each key changed at once, so the process may end between any two
/// changes: every rule that was stored and stays can be read at every moment.
void writeRules(QSettings &store, const RuleMap &rules, const StoreWriter &writer);
