#include "Orvan/Doctor/PortalStation.h"

#include "PrintDialog/Host/InstalledFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBackEnds = "/printbackends/";

std::string contentsOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Without what the bus tells of itself.
std::string busOf(std::string_view address) {
    return std::string(address.substr(0, address.find(',')));
}

// The session bus that the process was started with; "" for none.
std::string busOf(const fs::path& process) {
    constexpr std::string_view kVariable = "DBUS_SESSION_BUS_ADDRESS=";
    std::istringstream variables(contentsOf(process / "environ"));
    for (std::string variable; std::getline(variables, variable, '\0');)
        if (variable.starts_with(kVariable))
            return busOf(std::string_view(variable).substr(kVariable.size()));
    return {};
}

// The folders in /proc of this session's processes of that program, also where its file was replaced.
std::vector<fs::path> processesOf(const std::string& program) {
    const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    const std::string bus = busOf(std::string_view(address != nullptr ? address : ""));
    std::vector<fs::path> found;
    std::error_code ended;
    for (const auto& entry : fs::directory_iterator("/proc", ended)) {
        struct stat status {};
        const std::string name = entry.path().filename().string();
        if (!std::ranges::all_of(name, [](unsigned char c) { return std::isdigit(c) != 0; }) ||
            stat(entry.path().c_str(), &status) != 0 || status.st_uid != geteuid())
            continue;
        const std::string file = fs::read_symlink(entry.path() / "exe", ended).filename().string();
        if ((file == program || file == program + " (deleted)") && busOf(entry.path()) == bus)
            found.push_back(entry.path());
    }
    return found;
}

// GTK 3 loads its modules when the portal starts.
bool lacksGtk3Module(const fs::path& process) {
    const std::string maps = contentsOf(process / "maps");
    return !maps.empty() && maps.find(gtkModuleFile().filename().string()) == std::string::npos;
}

// GTK 4 loads them with the first dialog; before it, the next one has the tab.
bool lacksGtk4Module(const fs::path& process) {
    const std::string maps = contentsOf(process / "maps");
    return maps.find(kBackEnds) != std::string::npos &&
           maps.find(gtk4ModuleFile().filename().string()) == std::string::npos;
}

struct PortalProgram {
    const char* name;
    bool (*lacksModule)(const fs::path& process);
};
constexpr std::array<PortalProgram, 2> kPortals{{
    {"xdg-desktop-portal-gtk", lacksGtk3Module},
    {"xdg-desktop-portal-gnome", lacksGtk4Module},
}};

} // namespace

Finding examinePortals() {
    std::string running;
    for (const PortalProgram& portal : kPortals) {
        const auto processes = processesOf(portal.name);
        if (std::ranges::any_of(processes, portal.lacksModule))
            return problem(
                std::string(portal.name) +
                    " was started before the paper options were installed, or without them, so the "
                    "print dialogs of sandboxed applications have no tab",
                "Log out and in again.");
        if (!processes.empty()) running.append(running.empty() ? "" : " and ").append(portal.name);
    }
    if (running.empty()) return ok("none runs; one that starts in a new session has the paper options");
    return ok("the print dialogs of " + running + " have the paper options");
}

} // namespace orvan
