// Where a host is, for who does not wait for ever.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace orvan {

struct HostAddress {
    std::string address; // IPv4 in dotted form; empty when none was found
    std::string problem; // for people, a clause: that nobody answered in time; empty otherwise
};

// The system's resolver is waited for no longer than this.
inline constexpr std::chrono::seconds kMaximumLookupTime{5};

// The host's first IPv4 address by the system's resolver; of a host under "local" that the resolver does not
// know, or not within a second, the one that the local network knows (Common/RendezvousUtilities.h). An IPv6
// address has none. Blocks. Callable from any thread.
HostAddress findHostAddress(const std::string& host);

// Whether the name is one of multicast DNS (RFC 6762, section 3), with its final dot or without.
bool isUnderLocal(std::string_view host);

} // namespace orvan
