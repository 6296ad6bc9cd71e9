#include "app/lumetrawindow.h"

#include "app/formatting.h"
#include "assets/images.h"
#include "dashboard/applicationicons.h"
#include "widgets/tablecells.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr int firstRuleColumn = 4; ///< "DL Limit", "UL Limit", "Block"

/// A limit's text: the default's stands in for a value that was never chosen.
QString limitText(int kbps, int defaultKbps)
{
    return formatLimit(kbps < 1 ? defaultKbps : kbps);
}

} // namespace

void LumetraWindow::setAppRow(CellFilling &filling, int row, const QString &name,
                              const QString &dlRate, const QString &ulRate, const QString &priority,
                              const QString &dlLimit, const QString &ulLimit, const QString &block,
                              const QString &sockets, bool systemRow)
{
    const QString key = name.trimmed();
    const AppRule rule = rules.value(key);
    const bool ruled = isRuleTarget(key);

    const std::array texts{
        name,
        dlRate,
        ulRate,
        ruled ? rule.priority : priority,
        ruled && rule.dlLimit ? limitText(rule.dlKbps, settings.defaultLimitKbps) : dlLimit,
        ruled && rule.ulLimit ? limitText(rule.ulKbps, settings.defaultLimitKbps) : ulLimit,
        ruled && rule.blocked ? u"On"_s : block,
        sockets,
    };
    const std::array checked{rule.dlLimit, rule.ulLimit, rule.blocked};

    for (int column = 0; column < static_cast<int>(texts.size()); ++column) {
        CellContent cell{texts.at(static_cast<std::size_t>(column))};
        cell.isCentred = column > 0;
        if (column == 0 && ruled)
            cell.icon = appIcon(key);
        if (systemRow) {
            cell.background = QColor(u"#0ea5e9"_s);
            cell.foreground = Qt::white;
        }
        const auto rulePart = static_cast<std::size_t>(column - firstRuleColumn);
        if (column >= firstRuleColumn && rulePart < checked.size() && !systemRow)
            cell.checked = checked.at(rulePart);
        filling.set(row, column, cell);
    }
}

QIcon LumetraWindow::appIcon(const QString &name)
{
    const auto cached = iconCache.constFind(name);
    if (cached != iconCache.constEnd())
        return *cached;

    const auto sample = std::ranges::find(samples, name, &AppSample::name);
    QIcon icon
        = applicationIcons->iconOf(appPaths.value(name), sample != samples.end() ? sample->pid : 0);
    if (!canBeDrawn(icon))
        icon = assetIcon(u"tovan-site-icon.svg"_s);
    return *iconCache.insert(name, icon);
}
