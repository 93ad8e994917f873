#include "Common/Utilities/PrinterIsReachable.h"

#include "Common/SimplePing.h"
#include "Common/Utilities/URIParts.h"
#include "Formats/TextEncoding.h"

namespace orvan {

bool PrinterIsReachable(const std::optional<std::string>& url) {
    constexpr int kRequests = 1;
    constexpr int kTimeout = 200; // milliseconds
    const std::optional<URIParts> parts = url ? separateURI(*url) : std::nullopt;
    const std::optional<std::string> host = parts ? platform::encodeLatin1(parts->host) : std::nullopt;
    return host && SimplePing(host->c_str(), kRequests, kTimeout, true) == 0;
}

} // namespace orvan
