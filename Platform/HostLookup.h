// Names of hosts to IPv4 addresses, by the C library's resolver (files, name servers: nsswitch.conf).
#pragma once

#include <netinet/in.h>

#include <optional>
#include <string>

namespace platform {

// The host's first IPv4 address, or that of a dotted text; nothing when there is none. Blocks as long as the
// resolver does. Callable from any thread.
std::optional<in_addr> lookUpHost(const std::string& host);

} // namespace platform
