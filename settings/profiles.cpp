#include "settings/profiles.h"

#include "settings/appsettings.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

// Only "Strict" touches the alerts, and no other profile takes that back: a user who once chose to
// be warned early stays warned.
constexpr std::array<TrafficProfile, 5> profiles{{
    {"Balanced"_L1, 1000, 100, 5000, false, std::nullopt},
    {"Gaming"_L1, 500, 60, 100000, true, std::nullopt},
    {"Work"_L1, 1000, 120, 2500, false, std::nullopt},
    {"Download"_L1, 750, 160, 50000, true, std::nullopt},
    {"Strict"_L1, 500, 80, 256, true, AlertLevels{70, 90}},
}};

} // namespace

std::span<const TrafficProfile> trafficProfiles()
{
    return profiles;
}

QStringList profileNames()
{
    QStringList names;
    for (const TrafficProfile &profile : profiles)
        names.append(profile.name);
    return names;
}

void applyPreset(AppSettings &settings, const QString &name)
{
    const auto found = std::ranges::find(profiles, name, &TrafficProfile::name);
    const TrafficProfile &profile = found == profiles.end() ? profiles.front() : *found;

    settings.currentProfile = profile.name;
    settings.refreshIntervalMs = profile.refreshIntervalMs;
    settings.maxTableRows = profile.maxTableRows;
    settings.defaultLimitKbps = profile.defaultLimitKbps;
    settings.compactMode = profile.compactMode;
    if (profile.alerts) {
        settings.notificationsEnabled = true;
        settings.notify80 = profile.alerts->warning;
        settings.notify95 = profile.alerts->critical;
    }
}
