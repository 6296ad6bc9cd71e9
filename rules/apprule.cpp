#include "rules/apprule.h"

#include "widgets/displaytext.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString onOff(bool on)
{
    return on ? u"on"_s : u"off"_s;
}

void fillLimit(int &kbps, int defaultLimitKbps)
{
    if (kbps < 1)
        kbps = defaultLimitKbps;
}

} // namespace

bool isRuleTarget(const QString &name)
{
    return !name.isEmpty() && name != "This PC"_L1 && name != "No matching apps"_L1
        && name != "System overview"_L1;
}

AppRule ruleFor(const RuleMap &rules, const QString &appName)
{
    return rules.value(appName);
}

void setSwitch(AppRule &rule, RuleSwitch which, bool on, int defaultLimitKbps)
{
    switch (which) {
    case RuleSwitch::DlLimit:
        rule.dlLimit = on;
        if (on)
            fillLimit(rule.dlKbps, defaultLimitKbps);
        break;
    case RuleSwitch::UlLimit:
        rule.ulLimit = on;
        if (on)
            fillLimit(rule.ulKbps, defaultLimitKbps);
        break;
    case RuleSwitch::Blocked:
        rule.blocked = on;
        break;
    }
}

QString applyAction(RuleMap &rules, const QString &appName, const QString &action,
                    int defaultLimitKbps)
{
    // An unknown action, too, leaves a rule behind.
    AppRule &rule = rules[appName];
    const QString shownName = displayedName(appName);

    if (action == "block"_L1) {
        setSwitch(rule, RuleSwitch::Blocked, !rule.blocked, defaultLimitKbps);
        return u"%1 %2"_s.arg(shownName, rule.blocked ? u"blocked"_s : u"unblocked"_s);
    }
    if (action == "dl"_L1) {
        setSwitch(rule, RuleSwitch::DlLimit, !rule.dlLimit, defaultLimitKbps);
        return u"Download limit %1 for %2"_s.arg(onOff(rule.dlLimit), shownName);
    }
    if (action == "ul"_L1) {
        setSwitch(rule, RuleSwitch::UlLimit, !rule.ulLimit, defaultLimitKbps);
        return u"Upload limit %1 for %2"_s.arg(onOff(rule.ulLimit), shownName);
    }
    if (action == "high"_L1) {
        rule.priority = u"High"_s;
        return "High priority: "_L1 + shownName;
    }
    if (action == "low"_L1) {
        rule.priority = u"Low"_s;
        return "Low priority: "_L1 + shownName;
    }
    if (action == "normal"_L1) {
        rule.priority = u"Normal"_s;
        return "Normal priority: "_L1 + shownName;
    }
    if (action == "reset"_L1) {
        rules.remove(appName);
        return "Rule reset: "_L1 + shownName;
    }
    return {};
}

QString priorityFromText(const QString &text)
{
    const QString priority = text.trimmed();
    return priority.isEmpty() ? u"Normal"_s : priority;
}

int limitFromText(const QString &text)
{
    return std::clamp(text.toInt(), 1, 100000);
}
