// Where a URI leads.
#pragma once

#include <optional>
#include <string>

namespace orvan {

struct URIParts {
    std::string scheme;
    // Percent escapes are the characters that they stand for, and an IPv6 address is without brackets.
    std::string host;
    // The scheme's own where the URI has none, or an empty one (RFC 3986, section 6.2.3); 0 where that is not
    // known, and for one that no port has (above 65535).
    int port = 0;
    std::string resource;
};

// Nothing for what is no URI (RFC 3986) and for a URI without a host.
std::optional<URIParts> separateURI(const std::string& uri);

} // namespace orvan
