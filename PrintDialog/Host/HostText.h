// The sentences that the print dialog's side adds to a panel, in the person's language.
#pragma once

#include "PrintDialog/Host/DialogPPD.h"

#include <string>
#include <vector>

namespace orvan {

// A text of the host's own string table (PrintDialog/Resources), its "%1", "%2" ... replaced by the values;
// the key, so filled, when there is no table.
std::string hostText(const std::string& key, const std::vector<std::string>& values = {});

// What marking a choice changed in other options than the one that was asked for ("" for none), and what
// contradicts it still; "" when there is nothing to say.
std::string noticeText(const DialogPPD& ppd, const MarkResult& result, const std::string& asked);

} // namespace orvan
