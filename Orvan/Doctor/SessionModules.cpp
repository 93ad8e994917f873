#include "Orvan/Doctor/SessionModules.h"

#include "PrintDialog/Host/InstalledFiles.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

namespace orvan {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModule = "orvan-paper-options-module";
constexpr std::string_view kMark = "orvan"; // of what is meant to be the module
constexpr std::array<const char*, 2> kVariables{"GTK3_MODULES", "GTK_MODULES"};

std::vector<std::string> entriesOf(std::string_view list) {
    constexpr std::string_view kBlanks = " \t\n\v\f\r"; // GTK takes them away
    std::vector<std::string> entries;
    while (!list.empty()) {
        std::string_view entry = list.substr(0, list.find(':'));
        list.remove_prefix(std::min(entry.size() + 1, list.size()));
        entry.remove_prefix(std::min(entry.find_first_not_of(kBlanks), entry.size()));
        entries.emplace_back(entry.substr(0, entry.find_last_not_of(kBlanks) + 1));
    }
    return entries;
}

// GTK tries a path as it is and with the suffix of shared objects.
bool isThere(const std::string& path) {
    std::error_code ignored;
    return fs::exists(path, ignored) || fs::exists(path + ".so", ignored);
}

bool isOurModule(const std::string& entry) {
    const std::string file = gtkModuleFile().filename().string();
    if (!entry.starts_with('/')) return entry == kModule || entry == file;
    const fs::path name = fs::path(entry).filename();
    std::error_code ignored;
    return fs::equivalent(entry, gtkModuleFile(), ignored) ||
           ((name == file || name.string() + ".so" == file) && isThere(entry));
}

// What is wrong with an entry that is meant to be the module.
Finding examineEntry(const std::string& variable, const std::string& entry) {
    const std::string place =
        " where " + variable +
        " is set (~/.config/environment.d, ~/.xsessionrc or the like), and log in again.";
    if (const std::size_t other = entry.find_first_of(";, "); other != std::string::npos)
        return problem(variable + " has \"" + entry.substr(other, 1) +
                           "\" between its modules, so GTK takes \"" + entry + "\" for the name of one",
            "Write \":\" instead" + place);
    const std::string mend = "Write \"" + std::string(kModule) + "\" instead" + place;
    if (entry.starts_with('/') && !isThere(entry))
        return problem(variable + " names " + entry + ", which is not there", mend);
    return problem(
        variable + " names \"" + entry + "\", which is not the module " + std::string(kModule), mend);
}

} // namespace

std::optional<Finding> examineSessionModules() {
    std::optional<Finding> wrong;
    for (const char* const variable : kVariables) {
        const char* const list = std::getenv(variable);
        for (const std::string& entry : entriesOf(list != nullptr ? list : "")) {
            if (isOurModule(entry)) return ok(std::string(variable) + " names the module");
            if (!wrong && entry.find(kMark) != std::string::npos) wrong = examineEntry(variable, entry);
        }
    }
    return wrong;
}

} // namespace orvan
