// Datagrams of the local link alone.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace platform {

// Takes one datagram from an IPv4 socket that has one: its length, as recv(2) answers it, or -1 and errno.
// Nothing when it does not come from that port of an address on the link, which is a subnet of one of this
// machine's interfaces (RFC 6762, sections 6 and 11); what the buffer then has is to be forgotten.
std::optional<std::int64_t> receiveFromLink(int socket, std::uint16_t port, std::span<std::uint8_t> buffer);

} // namespace platform
