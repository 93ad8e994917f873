// The sentences that the print dialog's side adds to a panel, in the person's language.
#pragma once

#include <string>
#include <vector>

namespace orvan {

// A text of the host's own string table (PrintDialog/Resources), its "%1", "%2" ... replaced by the values;
// the key, so filled, when there is no table.
std::string hostText(const std::string& key, const std::vector<std::string>& values = {});

} // namespace orvan
