// The settings of the person at whose desktop the process runs.
#pragma once

#include <string>
#include <vector>

namespace platform {

// The languages that the person prefers, best first, as language tags with "-" ("de-AT", "de", "en"), from
// the locale settings of the process (LANGUAGE, LC_ALL, LC_MESSAGES, LANG). The C locale names no language,
// so the list can be empty.
std::vector<std::string> preferredLanguages();

} // namespace platform
