// The sentences that the print dialog's side adds to a panel.
#pragma once

#include <string>
#include <vector>

namespace orvan {

// The languages that the host's string tables (PrintDialog/Resources) are in.
const std::vector<std::string>& hostLanguages();
// The first of them that the person prefers; "en" for none. For what is said beside no PPD
// (DialogPPD::language).
std::string personsHostLanguage();

// A text of the host's string table in that language, its "%1", "%2" ... replaced by the values; the key, so
// filled, when there is no such table. Any thread.
std::string hostText(
    const std::string& language, const std::string& key, const std::vector<std::string>& values = {});

} // namespace orvan
