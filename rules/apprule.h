#pragma once

#include <QMap>
#include <QString>

/// What the user wants for one application. Recorded and shown; nothing enforces it.
struct AppRule
{
    bool dlLimit = false; ///< download limit switched on
    bool ulLimit = false; ///< upload limit switched on
    bool blocked = false; ///< marked as blocked
    QString priority = QStringLiteral("Normal"); ///< "High", "Normal", "Low", or as typed
    int dlKbps = 0; ///< download limit, KB/s; 0 when none was chosen yet
    int ulKbps = 0; ///< upload limit, KB/s; 0 when none was chosen yet

    bool operator==(const AppRule &) const = default;
};

/// Rules by exact application name, in the order of UTF-16 code units.
using RuleMap = QMap<QString, AppRule>;

/// Switches of a rule that the tables show as check boxes.
enum class RuleSwitch { DlLimit, UlLimit, Blocked };

/// Whether a rule may be kept for this name: not for an empty one, nor for the tables' own rows.
bool isRuleTarget(const QString &name);

/// The application's rule, or a default one; the map stays as it is.
AppRule ruleFor(const RuleMap &rules, const QString &appName);

/// Sets a switch. A limit that is switched on without a value of its own takes `defaultLimitKbps`;
/// one that is switched off keeps its value.
void setSwitch(AppRule &rule, RuleSwitch which, bool on, int defaultLimitKbps);

/// Acts on the application's rule, which is there afterwards unless the action was "reset";
/// actions as for LumetraWindow::applyRuleAction(). Returns the text that announces the change,
/// empty when there is nothing to announce. Expects a name that may have a rule.
QString applyAction(RuleMap &rules, const QString &appName, const QString &action,
                    int defaultLimitKbps);

/// Priority as typed into a cell: trimmed, "Normal" when nothing is left.
QString priorityFromText(const QString &text);

/// Limit as typed into a cell, in KB/s: 1 to 100000, what is no number counts as 0.
int limitFromText(const QString &text);
