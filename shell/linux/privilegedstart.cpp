#include "shell/privilegedstart.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/auxv.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace std::string_view_literals;

/// Where screen, session, store and texts are found. None of them names code, nor the desktop,
/// whose plug-in for the toolkit may load what the user's files name.
constexpr std::array harmlessVariables{
    "DBUS_SESSION_BUS_ADDRESS"sv,
    "DESKTOP_STARTUP_ID"sv,
    "DISPLAY"sv,
    "HOME"sv,
    "LANG"sv,
    "LANGUAGE"sv,
    "LOGNAME"sv,
    "PATH"sv,
    "QT_AUTO_SCREEN_SCALE_FACTOR"sv,
    "QT_ENABLE_HIGHDPI_SCALING"sv,
    "QT_FONT_DPI"sv,
    "QT_IM_MODULE"sv,
    "QT_QPA_PLATFORM"sv,
    "QT_SCALE_FACTOR"sv,
    "QT_SCALE_FACTOR_ROUNDING_POLICY"sv,
    "QT_SCREEN_SCALE_FACTORS"sv,
    "SESSION_MANAGER"sv,
    "SHELL"sv,
    "TZ"sv,
    "USER"sv,
    "WAYLAND_DISPLAY"sv,
    "XAUTHORITY"sv,
    "XCURSOR_SIZE"sv,
    "XCURSOR_THEME"sv,
    "XDG_ACTIVATION_TOKEN"sv,
    "XDG_CACHE_HOME"sv,
    "XDG_CONFIG_DIRS"sv,
    "XDG_CONFIG_HOME"sv,
    "XDG_DATA_DIRS"sv,
    "XDG_DATA_HOME"sv,
    "XDG_RUNTIME_DIR"sv,
    "XDG_SESSION_ID"sv,
    "XDG_SESSION_TYPE"sv,
    "XMODIFIERS"sv,
};

bool isHarmless(std::string_view name)
{
    return name.starts_with("LC_"sv)
        || std::ranges::find(harmlessVariables, name) != harmlessVariables.end();
}

void forgetEnvironment()
{
    std::vector<std::pair<std::string, std::string>> kept;
    for (char **variable = environ; variable && *variable; ++variable) {
        const std::string_view text(*variable);
        const std::string_view name = text.substr(0, text.find('='));
        if (name.size() < text.size() && isHarmless(name))
            kept.emplace_back(name, text.substr(name.size() + 1));
    }
    clearenv();
    for (const auto &[name, value] : kept)
        setenv(name.c_str(), value.c_str(), 1);
}

} // namespace

void guardPrivilegedStart(int &argc, char **argv)
{
    // The kernel says so by this entry, getauxval(3).
    if (getauxval(AT_SECURE) == 0)
        return;
    forgetEnvironment();
    if (argc > 1) {
        argc = 1;
        argv[1] = nullptr;
    }
}
