#include "Platform/UserDefaults.h"

#include <glib.h>

#include <algorithm>

namespace platform {

std::vector<std::string> preferredLanguages() {
    std::vector<std::string> languages;
    for (const gchar* const* name = g_get_language_names(); *name != nullptr; ++name) {
        // Locale names are language[_territory][.codeset][@modifier]; the variants with a codeset repeat the
        // others.
        std::string tag = *name;
        if (tag == "C" || tag == "POSIX" || tag.find_first_of(".@") != std::string::npos) continue;
        std::replace(tag.begin(), tag.end(), '_', '-');
        if (std::find(languages.begin(), languages.end(), tag) == languages.end()) languages.push_back(tag);
    }
    return languages;
}

} // namespace platform
