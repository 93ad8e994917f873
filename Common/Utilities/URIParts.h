// Where a URI leads.
#pragma once

#include <optional>
#include <string>

namespace orvan {

struct URIParts {
    std::string scheme;
    std::string host; // percent escapes are the characters that they stand for, and an IPv6 address is
                      // without brackets
};

// Nothing for what is no URI (RFC 3986) and for a URI without a host.
std::optional<URIParts> separateURI(const std::string& uri);

} // namespace orvan
