#pragma once

#include "settings/settingsstore.h"

/// A thousand rules that every save has.
inline StoredState keptState()
{
    StoredState state;
    for (int rule = 0; rule < 1000; ++rule) {
        state.rules.insert(QStringLiteral("kept %1").arg(rule),
                           {true, false, true, QStringLiteral("High"), rule, 7});
    }
    return state;
}

/// Rules that every other save has. Their names come before those of the others.
inline RuleMap passingRules()
{
    RuleMap rules;
    for (int rule = 0; rule < 3; ++rule) {
        rules.insert(QStringLiteral("a passing one %1").arg(rule),
                     {false, true, false, QStringLiteral("Low"), 1, rule});
    }
    return rules;
}
