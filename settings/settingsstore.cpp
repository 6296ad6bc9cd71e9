#include "settings/settingsstore.h"

#include "app/lumetrawindow.h"
#include "settings/storeguard.h"

#include <QSettings>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr auto organisation = "Tovan"_L1;
constexpr auto application = "Tovan Network Monitor"_L1;

constexpr auto dayKeyKey = "dayKey"_L1;
constexpr auto monthKeyKey = "monthKey"_L1;
constexpr auto todayBytesKey = "todayBytes"_L1;
constexpr auto monthBytesKey = "monthBytes"_L1;

constexpr auto rulesKey = "rules"_L1;
constexpr auto appKey = "app"_L1;
constexpr auto dlLimitKey = "dlLimit"_L1;
constexpr auto ulLimitKey = "ulLimit"_L1;
constexpr auto blockedKey = "blocked"_L1;
constexpr auto priorityKey = "priority"_L1;
constexpr auto dlKbpsKey = "dlKbps"_L1;
constexpr auto ulKbpsKey = "ulKbps"_L1;

// QVariant::toInt() cuts a number that is too large for an int down to its low bits. Such a number
// is no number here, as one that is too large for 64 bits is none.
int toInt(const QVariant &value)
{
    const qlonglong number = value.toLongLong();
    return std::in_range<int>(number) ? static_cast<int>(number) : 0;
}

void readSetting(const QSettings &store, const SettingRow &row, AppSettings &settings)
{
    const auto stored
        = [&store, &row](const auto &defaultValue) { return store.value(row.key, defaultValue); };
    if (const auto *bytes = std::get_if<ByteCountSetting>(&row.setting))
        settings.*bytes->field = stored(bytes->defaultValue).toULongLong();
    else if (const auto *number = std::get_if<NumberSetting>(&row.setting))
        settings.*number->field
            = std::clamp(toInt(stored(number->defaultValue)), number->low, number->high);
    else if (const auto *flag = std::get_if<FlagSetting>(&row.setting))
        settings.*flag->field = stored(flag->defaultValue).toBool();
    else if (const auto *text = std::get_if<TextSetting>(&row.setting))
        settings.*text->field = stored(text->defaultValue).toString();
}

AppRule readRule(const QSettings &store, int defaultLimitKbps)
{
    AppRule rule;
    rule.dlLimit = store.value(dlLimitKey, rule.dlLimit).toBool();
    rule.ulLimit = store.value(ulLimitKey, rule.ulLimit).toBool();
    rule.blocked = store.value(blockedKey, rule.blocked).toBool();
    rule.priority = store.value(priorityKey, rule.priority).toString();
    rule.dlKbps = toInt(store.value(dlKbpsKey, defaultLimitKbps));
    rule.ulKbps = toInt(store.value(ulKbpsKey, defaultLimitKbps));
    return rule;
}

// Numbers of the array's elements that are in the store, which counts them from 1. A damaged store
// may claim any size, so what is there decides how much there is to read, not the size.
std::vector<int> storedElements(const QSettings &store, int size)
{
    std::vector<int> elements;
    const QStringList groups = store.childGroups();
    for (const QString &group : groups) {
        const int element = group.toInt();
        if (element >= 1 && element <= size && QString::number(element) == group)
            elements.push_back(element);
    }
    std::ranges::sort(elements);
    return elements;
}

RuleMap readRules(QSettings &store, int defaultLimitKbps)
{
    RuleMap rules;
    store.beginGroup(rulesKey);
    const auto elements = storedElements(store, toInt(store.value("size"_L1)));
    for (const int element : elements) {
        store.beginGroup(QString::number(element));
        const QString app = store.value(appKey).toString();
        if (!app.isEmpty())
            rules.insert(app, readRule(store, defaultLimitKbps));
        store.endGroup();
    }
    store.endGroup();
    return rules;
}

bool asksForNothing(const AppRule &rule)
{
    return !rule.dlLimit && !rule.ulLimit && !rule.blocked && rule.priority == "Normal"_L1
        && rule.dlKbps <= 0 && rule.ulKbps <= 0;
}

void writeRules(QSettings &store, const RuleMap &rules)
{
    store.remove(rulesKey);
    store.beginWriteArray(rulesKey);
    int index = 0;
    for (const auto &[app, rule] : rules.asKeyValueRange()) {
        if (asksForNothing(rule))
            continue;
        store.setArrayIndex(index++);
        store.setValue(appKey, app);
        store.setValue(dlLimitKey, rule.dlLimit);
        store.setValue(ulLimitKey, rule.ulLimit);
        store.setValue(blockedKey, rule.blocked);
        store.setValue(priorityKey, rule.priority);
        store.setValue(dlKbpsKey, rule.dlKbps);
        store.setValue(ulKbpsKey, rule.ulKbps);
    }
    store.endArray();
}

} // namespace

StoredState readStore(QSettings &store, QDate today)
{
    StoredState state;
    for (const SettingRow &row : settingsTable())
        readSetting(store, row, state.settings);
    state.usage.dayKey = store.value(dayKeyKey, usageDayKey(today)).toString();
    state.usage.monthKey = store.value(monthKeyKey, usageMonthKey(today)).toString();
    state.usage.todayBytes = store.value(todayBytesKey).toULongLong();
    state.usage.monthBytes = store.value(monthBytesKey).toULongLong();
    state.rules = readRules(store, state.settings.defaultLimitKbps);
    return state;
}

void writeStore(QSettings &store, const StoredState &state)
{
    for (const SettingRow &row : settingsTable()) {
        std::visit(
            [&](const auto &setting) { store.setValue(row.key, state.settings.*setting.field); },
            row.setting);
    }
    store.setValue(dayKeyKey, state.usage.dayKey);
    store.setValue(monthKeyKey, state.usage.monthKey);
    store.setValue(todayBytesKey, state.usage.todayBytes);
    store.setValue(monthBytesKey, state.usage.monthBytes);
    writeRules(store, state.rules);
}

qint64 largestStoreSize(const StoredState &state)
{
    // Keys, numbers and section names; then the texts, escaped to six bytes a code unit at worst.
    constexpr qint64 scalarBytes = 4096;
    constexpr qint64 ruleBytes = 256;
    constexpr qint64 codeUnitBytes = 6;
    const AppSettings &settings = state.settings;
    qint64 codeUnits = settings.packageUnit.size() + settings.currentProfile.size()
        + settings.windowTitleText.size() + settings.accentColor.size() + state.usage.dayKey.size()
        + state.usage.monthKey.size();
    for (const auto &[app, rule] : state.rules.asKeyValueRange())
        codeUnits += app.size() + rule.priority.size();
    return scalarBytes + state.rules.size() * ruleBytes + codeUnits * codeUnitBytes;
}

void LumetraWindow::loadSettings()
{
    QSettings store(organisation, application);
    StoredState state = readStore(store, QDate::currentDate());
    settings = std::move(state.settings);
    usage = std::move(state.usage);
    rules = std::move(state.rules);
}

void LumetraWindow::saveSettings()
{
    const StoredState state{settings, usage, rules};
    QSettings store(organisation, application);
    // A save that is not possible now is made up for by the next one, a tick later.
    if (storeHasRoom(store.fileName(), largestStoreSize(state)) && storeIsFree(store.fileName()))
        writeStore(store, state);
}
