// Questions to name servers and, for names under "local", to the hosts of the local network: multicast DNS
// (RFC 6762), as a resolver that asks once and takes one answer (section 5.1).
//
// Everything here blocks its caller and may be called from any thread.
#pragma once

#include <netinet/in.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace orvan {

// The group that multicast DNS asks, 224.0.0.251, and its port.
extern const sockaddr_in mDNS_addr;

// A query by multicast lasts three seconds when nothing comes, and no longer than this when others' answers
// do.
inline constexpr std::chrono::seconds kMaximumMulticastTime{6};

// The answer message's length, or -1 and errno; ETIMEDOUT when nobody answered. The name is in the form that
// the C library's resolver reads, so a dot or backslash inside a label has a backslash before it. Names under
// "local" are asked for on every IPv4 interface that is marked for multicast and is not point-to-point, three
// times; all others, and all on releases whose own resolver knows "local" (10.2.3), go to res_query(3) and
// what it answers is answered; that may be more than the buffer's size. An answer by multicast comes from the
// port of multicast DNS and an address on the link, and its questions are those of the query; nothing else is
// checked.
int mDNS_res_query(const char* name, int queryClass, int type, std::span<std::uint8_t> answer);

// The same for who has to do with real networks: an interface that cannot send does not keep the others from
// being asked, and an empty datagram, or one that cannot be read, is not the answer.
int askLocalNetwork(const char* name, int queryClass, int type, std::span<std::uint8_t> answer);

// The first IPv4 address that the local network knows for a host under "local", asked as above; nothing when
// nobody answers with one.
std::optional<in_addr> addressUnderLocal(const std::string& host);

// The host's IPv4 address in dotted form, or the host as it was when it has none. No host, no result. Of
// the given vocabulary; nothing here calls it.
std::optional<std::string> ResolveToIP(const std::optional<std::string>& host);

} // namespace orvan
