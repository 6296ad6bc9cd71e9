#include "settings/storedrules.h"

#include "settings/storevalues.h"

#include <QSettings>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr auto rulesKey = "rules"_L1;
constexpr auto sizeKey = "rules/size"_L1;

constexpr auto appKey = "app"_L1;
constexpr auto dlLimitKey = "dlLimit"_L1;
constexpr auto ulLimitKey = "ulLimit"_L1;
constexpr auto blockedKey = "blocked"_L1;
constexpr auto priorityKey = "priority"_L1;
constexpr auto dlKbpsKey = "dlKbps"_L1;
constexpr auto ulKbpsKey = "ulKbps"_L1;
constexpr std::array elementKeys{appKey,      dlLimitKey, ulLimitKey, blockedKey,
                                 priorityKey, dlKbpsKey,  ulKbpsKey};

struct NamedRule
{
    QString app;
    AppRule rule;
};

/// The number of an array's element, which the store counts from 1; 0 for any other group.
int elementNumber(QStringView group)
{
    const int number = group.toInt();
    return number >= 1 && QString::number(number) == group ? number : 0;
}

QString elementKey(int number)
{
    return rulesKey + u'/' + QString::number(number);
}

AppRule readRule(const QSettings &store, int defaultLimitKbps)
{
    AppRule rule;
    rule.dlLimit = store.value(dlLimitKey, rule.dlLimit).toBool();
    rule.ulLimit = store.value(ulLimitKey, rule.ulLimit).toBool();
    rule.blocked = store.value(blockedKey, rule.blocked).toBool();
    rule.priority = storedText(store.value(priorityKey, rule.priority));
    rule.dlKbps = storedInt(store.value(dlKbpsKey, defaultLimitKbps));
    rule.ulKbps = storedInt(store.value(ulKbpsKey, defaultLimitKbps));
    return rule;
}

/// Numbers of the array's elements that are in the store. A damaged store may claim any size, so
/// what is there decides how much there is to read, not the size.
std::vector<int> storedElements(QSettings &store)
{
    const int size = storedInt(store.value(sizeKey));
    std::vector<int> elements;
    store.beginGroup(rulesKey);
    const QStringList groups = store.childGroups();
    store.endGroup();
    for (const QString &group : groups) {
        const int number = elementNumber(group);
        if (number >= 1 && number <= size)
            elements.push_back(number);
    }
    std::ranges::sort(elements);
    return elements;
}

QString storedApp(const QSettings &store, int element)
{
    return storedText(store.value(elementKey(element) + u'/' + appKey));
}

bool asksForNothing(const AppRule &rule)
{
    return !rule.dlLimit && !rule.ulLimit && !rule.blocked && rule.priority == "Normal"_L1
        && rule.dlKbps <= 0 && rule.ulKbps <= 0;
}

QList<NamedRule> rulesToStore(const RuleMap &rules)
{
    QList<NamedRule> kept;
    for (const auto &[app, rule] : rules.asKeyValueRange()) {
        if (!asksForNothing(rule))
            kept.append({app, rule});
    }
    return kept;
}

/// Whether the elements are those of these rules already, each at its place.
bool haveTheirPlaces(const QList<NamedRule> &rules, const std::vector<int> &elements,
                     const QSettings &store)
{
    if (std::cmp_not_equal(elements.size(), rules.size()))
        return false;
    for (int i = 0; i < rules.size(); ++i) {
        const int element = elements[static_cast<std::size_t>(i)];
        if (element != i + 1 || storedApp(store, element) != rules.at(i).app)
            return false;
    }
    return true;
}

/// Writes the rules as the elements behind number `behind`.
void writeElements(const QList<NamedRule> &rules, int behind, const StoreWriter &writer)
{
    int number = behind;
    for (const auto &[app, rule] : rules) {
        const QString element = elementKey(++number) + u'/';
        writer.set(element + appKey, toStored(app));
        writer.set(element + dlLimitKey, rule.dlLimit);
        writer.set(element + ulLimitKey, rule.ulLimit);
        writer.set(element + blockedKey, rule.blocked);
        writer.set(element + priorityKey, toStored(rule.priority));
        writer.set(element + dlKbpsKey, rule.dlKbps);
        writer.set(element + ulKbpsKey, rule.ulKbps);
    }
}

bool isElementKey(const QString &key)
{
    return std::ranges::find(elementKeys, key) != elementKeys.end();
}

/// Whether the store finds the key by its name: of one that has an empty part it takes the name for
/// that without this part.
bool isFoundByName(const QString &key)
{
    return !key.startsWith(u'/') && !key.endsWith(u'/') && !key.contains("//"_L1);
}

/// Removes what is in the array and is none of so many rules, as far as it can be removed.
void removeLeftOver(const QStringList &keys, int rules, const StoreWriter &writer)
{
    QString removed; // the last one, which the keys after it may belong to
    for (const QString &key : keys) {
        const qsizetype separator = key.indexOf(u'/');
        const QString group = key.left(separator);
        if (!isFoundByName(key) || group == removed || key == "size"_L1)
            continue;
        const int number = elementNumber(group);
        const bool isElement = number >= 1 && number <= rules;
        if (isElement && (separator < 0 || isElementKey(key.sliced(separator + 1))))
            continue;
        // Where something is written, only what is beside it goes.
        const bool isWritten = isElement || group == "size"_L1;
        removed = isWritten ? QString() : group;
        writer.remove(rulesKey + u'/' + (isWritten ? key : group));
    }
}

} // namespace

RuleMap readRules(QSettings &store, int defaultLimitKbps)
{
    RuleMap rules;
    const auto elements = storedElements(store);
    for (const int element : elements) {
        const QString app = storedApp(store, element);
        if (app.isEmpty())
            continue;
        store.beginGroup(elementKey(element));
        rules.insert(app, readRule(store, defaultLimitKbps));
        store.endGroup();
    }
    return rules;
}

void writeRules(QSettings &store, const RuleMap &rules, const StoreWriter &writer)
{
    const QList<NamedRule> kept = rulesToStore(rules);
    const int size = static_cast<int>(kept.size());
    const std::vector<int> elements = storedElements(store);
    store.beginGroup(rulesKey);
    const QStringList keysBefore = store.allKeys();
    store.endGroup();

    // Where rules change their places, one is written over before it stands in its new place. So
    // all of them are written behind the array first, where they count as soon as the array is said
    // to be that long: of two elements of one name the later one counts.
    const int behind = std::max(elements.empty() ? 0 : elements.back(), size);
    const bool move = !elements.empty() && !haveTheirPlaces(kept, elements, store)
        && behind <= std::numeric_limits<int>::max() - size;
    if (move) {
        writeElements(kept, behind, writer);
        writer.set(sizeKey, behind + size);
    }
    writeElements(kept, 0, writer);
    writer.set(sizeKey, size);
    removeLeftOver(keysBefore, size, writer);
    for (int copy = 1; move && copy <= size; ++copy)
        writer.remove(elementKey(behind + copy));
}
