#pragma once

#include <QLatin1StringView>
#include <QStringList>

#include <optional>
#include <span>

struct AppSettings;

/// Levels that a traffic profile sets, in percent of the allowance; it then also enables alerts.
struct AlertLevels
{
    int warning;
    int critical;
};

/// A named preset that overwrites some of the preferences and leaves the others as they are.
struct TrafficProfile
{
    QLatin1StringView name;
    int refreshIntervalMs;
    int maxTableRows;
    int defaultLimitKbps;
    bool compactMode;
    std::optional<AlertLevels> alerts;
};

/// All profiles, in the order of every list that offers them; the first one is the fallback.
std::span<const TrafficProfile> trafficProfiles();
/// Their names in the same order.
QStringList profileNames();

/// Overwrites the preferences with those of the profile called `name`, or of the fallback when
/// there is none; `currentProfile` becomes the name of the profile that was applied.
void applyPreset(AppSettings &settings, const QString &name);
