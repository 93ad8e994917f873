// Whether a printer is there.
#pragma once

#include <optional>
#include <string>

namespace orvan {

// Whether the URL's host replies to an echo request (Common/SimplePing.h) within a second. No for no URL and
// for one without a host; nothing is sent then. No also when the system does not permit the request. Blocks.
// Of the given vocabulary; nothing here calls it.
bool PrinterIsReachable(const std::optional<std::string>& url);

} // namespace orvan
