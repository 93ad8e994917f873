#include "PrintDialog/Host/AdministratorSettings.h"

#include <glib.h>

#include <memory>

namespace orvan {
namespace {

constexpr const char* kFile = "orvan/paper-options.conf";
constexpr const char* kGroup = "Paper Options";

bool isOff(GKeyFile* file, const char* key) {
    GError* error = nullptr;
    const bool isTrue = g_key_file_get_boolean(file, kGroup, key, &error) != FALSE;
    const bool isThere = error == nullptr;
    g_clear_error(&error);
    return isThere && !isTrue;
}

} // namespace

AdministratorSettings administratorSettings() {
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> file(g_key_file_new(), g_key_file_free);
    AdministratorSettings settings;
    for (const char* const* folder = g_get_system_config_dirs(); *folder != nullptr; ++folder) {
        const std::string path = std::string(*folder) + '/' + kFile;
        if (g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr) == FALSE) continue;
        settings.file = path;
        settings.showsTab = !isOff(file.get(), "Tab");
        settings.asksPrinter = !isOff(file.get(), "AskPrinter");
        settings.hasPresets = !isOff(file.get(), "Presets");
        break;
    }
    return settings;
}

} // namespace orvan
