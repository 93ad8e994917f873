#include "Common/Utilities/HostAddress.h"

#include "Common/RendezvousUtilities.h"
#include "Platform/HostLookup.h"

#include <strings.h>

#include <algorithm>
#include <future>
#include <optional>

namespace orvan {
namespace {

using Clock = std::chrono::steady_clock;
using Lookup = std::future<std::optional<in_addr>>;

// A resolver that knows "local" answers at once; one that does not may ask name servers in vain.
constexpr std::chrono::seconds kLocalPatience{1};

bool isOver(const Lookup& lookup, Clock::time_point limit) {
    return lookup.wait_until(limit) == std::future_status::ready;
}

HostAddress found(const std::optional<in_addr>& address) {
    return {address ? platform::dottedText(*address) : "", {}};
}

} // namespace

HostAddress findHostAddress(const std::string& host) {
    if (host.find(':') != std::string::npos) return {};
    const auto start = Clock::now();
    Lookup lookup = platform::startHostLookup(host);
    std::optional<in_addr> address;
    if (isUnderLocal(host)) {
        if (isOver(lookup, start + kLocalPatience)) address = lookup.get();
        if (!address) address = addressUnderLocal(host);
        if (address || !lookup.valid()) return found(address);
    }
    if (isOver(lookup, start + kMaximumLookupTime)) return found(lookup.get());
    const std::string time = std::to_string(kMaximumLookupTime.count()) + " seconds";
    if (isUnderLocal(host))
        return {{}, "nobody on the local network told the address of " + host + " within " + time};
    return {{}, "the address of " + host + " could not be looked up within " + time +
                    ", because this machine's name server does not answer"};
}

bool isUnderLocal(std::string_view host) {
    if (host.ends_with('.')) host.remove_suffix(1);
    constexpr std::string_view kLocal = ".local";
    return host.size() > kLocal.size() &&
           ::strcasecmp(std::string(host.substr(host.size() - kLocal.size())).c_str(), kLocal.data()) == 0;
}

} // namespace orvan
