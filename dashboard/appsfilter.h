#pragma once

#include "rules/apprule.h"
#include "sampling/appsample.h"

/// What the user chose to see in the applications table.
struct AppsFilter
{
    QString tab; ///< text of the checked tab
    QString quickFilter; ///< text of the checked quick filter
    QString search; ///< part of a name or of a process id; empty for everything
};

/// Whether a sample is shown: the tab, the quick filter and the search must all let it pass. A tab
/// or quick filter of an unknown name lets nothing pass.
bool passes(const AppsFilter &filter, const AppSample &sample, const RuleMap &rules);

/// The samples that are shown, in their order.
QList<AppSample> shownSamples(const QList<AppSample> &samples, const RuleMap &rules,
                              const AppsFilter &filter);
