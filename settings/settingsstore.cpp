#include "settings/settingsstore.h"

#include "settings/storedrules.h"
#include "settings/storevalues.h"

#include <QSettings>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto dayKeyKey = "dayKey"_L1;
constexpr auto monthKeyKey = "monthKey"_L1;
constexpr auto todayBytesKey = "todayBytes"_L1;
constexpr auto monthBytesKey = "monthBytes"_L1;

void readSetting(const QSettings &store, const SettingRow &row, AppSettings &settings)
{
    const auto stored
        = [&store, &row](const auto &defaultValue) { return store.value(row.key, defaultValue); };
    if (const auto *bytes = std::get_if<ByteCountSetting>(&row.setting))
        settings.*bytes->field = stored(bytes->defaultValue).toULongLong();
    else if (const auto *number = std::get_if<NumberSetting>(&row.setting))
        settings.*number->field
            = std::clamp(storedInt(stored(number->defaultValue)), number->low, number->high);
    else if (const auto *flag = std::get_if<FlagSetting>(&row.setting))
        settings.*flag->field = stored(flag->defaultValue).toBool();
    else if (const auto *text = std::get_if<TextSetting>(&row.setting))
        settings.*text->field = storedText(stored(QString(text->defaultValue)));
}

} // namespace

StoredState emptyState(QDate today)
{
    StoredState state;
    state.usage.dayKey = usageDayKey(today);
    state.usage.monthKey = usageMonthKey(today);
    return state;
}

StoredState readStore(QSettings &store, QDate today)
{
    StoredState state = emptyState(today);
    for (const SettingRow &row : settingsTable())
        readSetting(store, row, state.settings);
    state.usage.dayKey = storedText(store.value(dayKeyKey, state.usage.dayKey));
    state.usage.monthKey = storedText(store.value(monthKeyKey, state.usage.monthKey));
    state.usage.todayBytes = store.value(todayBytesKey).toULongLong();
    state.usage.monthBytes = store.value(monthBytesKey).toULongLong();
    state.rules = readRules(store, state.settings.defaultLimitKbps);
    return state;
}

void writeStore(QSettings &store, const StoredState &state, const StoredState *stored)
{
    const StoreWriter writer{
        [&store](const QString &key, const QVariant &value) { store.setValue(key, value); },
        [&store](const QString &key) { store.remove(key); }};
    const auto write = [&](const QString &key, const auto &valueOf) {
        if (!stored || valueOf(*stored) != valueOf(state))
            writer.set(key, toStored(valueOf(state)));
    };
    for (const SettingRow &row : settingsTable()) {
        std::visit(
            [&](const auto &setting) {
                write(row.key,
                      [&setting](const StoredState &from) { return from.settings.*setting.field; });
            },
            row.setting);
    }
    const auto writeUsage = [&write](const QString &key, const auto field) {
        write(key, [field](const StoredState &from) { return from.usage.*field; });
    };
    writeUsage(dayKeyKey, &UsageCounters::dayKey);
    writeUsage(monthKeyKey, &UsageCounters::monthKey);
    writeUsage(todayBytesKey, &UsageCounters::todayBytes);
    writeUsage(monthBytesKey, &UsageCounters::monthBytes);
    if (!stored || stored->rules != state.rules)
        writeRules(store, state.rules, writer);
}

std::chrono::milliseconds nextRetryDelay(std::chrono::milliseconds last)
{
    return std::clamp<std::chrono::milliseconds>(2 * last, 250ms, 8s);
}

qint64 largestStoreSize(const StoredState &state)
{
    // Keys, numbers and section names; then the texts, whose code units are escaped to six bytes at
    // worst, or, where a text is stored as UTF-8, each byte to four.
    constexpr qint64 scalarBytes = 4096;
    constexpr qint64 ruleBytes = 256;
    const auto textBytes = [](const QString &text) {
        return text.startsWith(QChar::ByteOrderMark) ? 12 * (text.size() + 1) : 6 * text.size();
    };
    const AppSettings &settings = state.settings;
    qint64 bytes = scalarBytes + state.rules.size() * ruleBytes;
    for (const QString &text :
         {settings.packageUnit, settings.currentProfile, settings.windowTitleText,
          settings.accentColor, state.usage.dayKey, state.usage.monthKey})
        bytes += textBytes(text);
    for (const auto &[app, rule] : state.rules.asKeyValueRange())
        bytes += textBytes(app) + textBytes(rule.priority);
    return bytes;
}
