#pragma once

#include "rules/apprule.h"
#include "sampling/appsample.h"

#include <QList>
#include <QString>

#include <vector>

/// What the Rules Manager is asked to show.
struct RulesFilter
{
    QString mode; ///< "All", "Blocked" or "Limited"; any other word shows nothing
    QString text; ///< part of the name in any letter case; empty for every name

    bool operator==(const RulesFilter &) const = default;
};

/// What the Rules Manager's list is made of.
struct RulesSources
{
    QList<AppSample> samples;
    RuleMap rules;
    RulesFilter filter;

    bool operator==(const RulesSources &) const = default;
};

/// One application of the Rules Manager's table.
struct ListedRule
{
    QString name;
    AppRule rule; ///< the default rule for an application that has none
    qint32 sockets = 0; ///< of the first sample of this name; 0 when it is not running

    bool operator==(const ListedRule &) const = default;
};

/// All that the table's cells are made of.
struct RulesContents
{
    RulesSources sources;
    QList<ListedRule> rows; ///< what the sources list
    int defaultLimitKbps = 0; ///< stands in for limits that were never chosen
};

/// All applications that were sampled or have a rule and pass the filter, by lower-cased name.
QList<ListedRule> listedRules(const QList<AppSample> &samples, const RuleMap &rules,
                              const RulesFilter &filter);

/// For each row of `now` the one that its application had in `before`, or -1.
std::vector<int> rowsBefore(const QList<ListedRule> &before, const QList<ListedRule> &now);
