#include "dashboard/appsfilter.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

bool passesTab(const QString &tab, const AppRule &rule)
{
    if (tab == "Rule List"_L1)
        return rule.dlLimit || rule.ulLimit || rule.blocked;
    if (tab == "Blocker"_L1)
        return rule.blocked;
    // These differ in their button alone.
    return tab == "Activity"_L1 || tab == "Application List"_L1 || tab == "Filter List"_L1
        || tab == "Network List"_L1 || tab == "Priorities"_L1;
}

bool passesQuickFilter(const QString &quickFilter, const AppSample &sample, const AppRule &rule)
{
    if (quickFilter == "All"_L1)
        return true;
    if (quickFilter == "Active"_L1)
        return sample.socketTotal() > 0;
    if (quickFilter == "Limited"_L1)
        return rule.dlLimit || rule.ulLimit;
    if (quickFilter == "Blocked"_L1)
        return rule.blocked;
    return quickFilter == "High Priority"_L1 && rule.priority == "High"_L1;
}

bool passesSearch(const QString &search, const AppSample &sample)
{
    return search.isEmpty() || sample.name.contains(search, Qt::CaseInsensitive)
        || QString::number(sample.pid).contains(search, Qt::CaseInsensitive);
}

} // namespace

bool passes(const AppsFilter &filter, const AppSample &sample, const RuleMap &rules)
{
    const AppRule rule = rules.value(sample.name);
    return passesTab(filter.tab, rule) && passesQuickFilter(filter.quickFilter, sample, rule)
        && passesSearch(filter.search, sample);
}

QList<AppSample> shownSamples(const QList<AppSample> &samples, const RuleMap &rules,
                              const AppsFilter &filter)
{
    QList<AppSample> shown;
    std::ranges::copy_if(samples, std::back_inserter(shown),
                         [&](const AppSample &sample) { return passes(filter, sample, rules); });
    return shown;
}
