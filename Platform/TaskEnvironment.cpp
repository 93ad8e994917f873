#include "Platform/Task.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace platform {
namespace {

// Variables of the desktop session, by their names and by the beginnings of their names.
constexpr std::array<std::string_view, 17> kSessionVariables = {"COLORTERM", "DESKTOP_SESSION",
    "DESKTOP_STARTUP_ID", "DISPLAY", "GDMSESSION", "GPG_AGENT_INFO", "INVOCATION_ID", "JOURNAL_STREAM",
    "MANAGERPID", "NO_AT_BRIDGE", "SESSION_MANAGER", "SSH_AGENT_PID", "SSH_AUTH_SOCK", "WAYLAND_DISPLAY",
    "WAYLAND_SOCKET", "WINDOWID", "XAUTHORITY"};
constexpr std::array<std::string_view, 14> kSessionPrefixes = {"AT_SPI_", "BAMF_", "DBUS_", "GDK_", "GIO_",
    "GNOME_", "GSETTINGS_", "GTK", "KDE_", "LD_", "MOZ_", "PLASMA_", "QT_", "XDG_"};

bool concernsSessionOnly(std::string_view name) {
    return std::find(kSessionVariables.begin(), kSessionVariables.end(), name) != kSessionVariables.end() ||
           std::any_of(kSessionPrefixes.begin(), kSessionPrefixes.end(),
               [name](std::string_view prefix) { return name.starts_with(prefix); });
}

} // namespace

TaskDescription::Environment defaultTaskEnvironment() {
    TaskDescription::Environment environment;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const auto equals = text.find('=');
        if (equals == std::string_view::npos || concernsSessionOnly(text.substr(0, equals))) continue;
        // Of several entries with one name the first is what getenv answers.
        environment.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    return environment;
}

} // namespace platform
