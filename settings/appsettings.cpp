#include "settings/appsettings.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<SettingRow, 19> table{{
    {"monthlyLimitBytes"_L1, ByteCountSetting{&AppSettings::monthlyLimitBytes, 107374182400ULL}},
    {"renewalDay"_L1, NumberSetting{&AppSettings::renewalDay, 1, 1, 28}},
    {"packageUnit"_L1, TextSetting{&AppSettings::packageUnit, "GB"_L1}},
    {"startMinimized"_L1, FlagSetting{&AppSettings::startMinimized, false}},
    {"closeToTray"_L1, FlagSetting{&AppSettings::closeToTray, true}},
    {"pauseOnLaunch"_L1, FlagSetting{&AppSettings::pauseOnLaunch, false}},
    {"notificationsEnabled"_L1, FlagSetting{&AppSettings::notificationsEnabled, true}},
    {"notify80"_L1, NumberSetting{&AppSettings::notify80, 80, 1, 99}},
    {"notify95"_L1, NumberSetting{&AppSettings::notify95, 95, 2, 100}},
    {"compactMode"_L1, FlagSetting{&AppSettings::compactMode, false}},
    {"showSystemRow"_L1, FlagSetting{&AppSettings::showSystemRow, true}},
    {"rememberRules"_L1, FlagSetting{&AppSettings::rememberRules, true}},
    {"miniWidgetEnabled"_L1, FlagSetting{&AppSettings::miniWidgetEnabled, false}},
    {"currentProfile"_L1, TextSetting{&AppSettings::currentProfile, "Balanced"_L1}},
    {"windowTitleText"_L1, TextSetting{&AppSettings::windowTitleText, "Tovan Network Monitor"_L1}},
    {"accentColor"_L1, TextSetting{&AppSettings::accentColor, "Green"_L1}},
    {"refreshIntervalMs"_L1, NumberSetting{&AppSettings::refreshIntervalMs, 1000, 250, 10000}},
    {"maxTableRows"_L1, NumberSetting{&AppSettings::maxTableRows, 100, 10, 1000}},
    {"defaultLimitKbps"_L1, NumberSetting{&AppSettings::defaultLimitKbps, 5, 1, 100000}},
}};

} // namespace

AppSettings::AppSettings()
{
    for (const SettingRow &row : table) {
        std::visit([this](const auto &setting) { this->*setting.field = setting.defaultValue; },
                   row.setting);
    }
}

std::span<const SettingRow> settingsTable()
{
    return table;
}

const NumberSetting &numberSetting(int AppSettings::*field)
{
    const auto row = std::ranges::find_if(table, [field](const SettingRow &candidate) {
        const auto *number = std::get_if<NumberSetting>(&candidate.setting);
        return number && number->field == field;
    });
    return std::get<NumberSetting>(row->setting);
}

int parseClamped(const QString &text, int low, int high)
{
    return std::clamp(text.toInt(), low, high);
}

int parseClamped(const QString &text, int AppSettings::*field)
{
    const NumberSetting &number = numberSetting(field);
    return parseClamped(text, number.low, number.high);
}
