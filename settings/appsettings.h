#pragma once

#include <QLatin1StringView>
#include <QString>

#include <span>
#include <variant>

/// The user's preferences. A new record holds the defaults of settingsTable().
struct AppSettings
{
    AppSettings();

    quint64 monthlyLimitBytes; ///< data allowance of a calendar month, bytes
    int renewalDay; ///< day of month; shown, takes no part in any roll-over
    QString packageUnit; ///< unit the allowance was entered in, "GB" or "MB"
    bool startMinimized; ///< start hidden in the tray
    bool closeToTray; ///< closing the window hides it
    bool pauseOnLaunch; ///< start, and apply settings, in the paused state
    bool notificationsEnabled; ///< raise usage alerts
    int notify80; ///< warning level, percent of the allowance
    int notify95; ///< critical level, percent of the allowance
    bool compactMode; ///< low rows in the applications table
    bool showSystemRow; ///< show the row "This PC"
    bool rememberRules; ///< shown and stored only; rules are always remembered
    bool miniWidgetEnabled; ///< show the mini monitor
    QString currentProfile; ///< last applied traffic profile
    QString windowTitleText; ///< title of the window and caption of its title bar
    QString accentColor; ///< stored and shown only
    int refreshIntervalMs; ///< milliseconds between two ticks
    int maxTableRows; ///< most application rows
    int defaultLimitKbps; ///< limit given to a rule that has none, KB/s

    bool operator==(const AppSettings &) const = default;
};

/// A preference that counts bytes; any value is allowed.
struct ByteCountSetting
{
    quint64 AppSettings::*field;
    quint64 defaultValue;
};

/// A preference that is a whole number within bounds, both allowed.
struct NumberSetting
{
    int AppSettings::*field;
    int defaultValue;
    int low;
    int high;
};

struct FlagSetting
{
    bool AppSettings::*field;
    bool defaultValue;
};

/// A preference that is a text; any text is allowed.
struct TextSetting
{
    QString AppSettings::*field;
    QLatin1StringView defaultValue;
};

/// One preference: its key in the store, its field, its default and its bounds.
struct SettingRow
{
    QLatin1StringView key;
    std::variant<ByteCountSetting, NumberSetting, FlagSetting, TextSetting> setting;
};

/// All preferences, in the order in which they are stored. The only place that knows their keys,
/// defaults and bounds.
std::span<const SettingRow> settingsTable();

/// The row of a preference that is a number.
const NumberSetting &numberSetting(int AppSettings::*field);

/// The decimal number that `text` reads as, moved into the bounds. A text that is no number, or
/// one too large for an int, counts as 0.
int parseClamped(const QString &text, int low, int high);

/// The same within the bounds of a preference.
int parseClamped(const QString &text, int AppSettings::*field);
