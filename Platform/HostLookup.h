// Names of hosts to IPv4 addresses, by the C library's resolver (files, name servers: nsswitch.conf).
#pragma once

#include <netinet/in.h>

#include <future>
#include <optional>
#include <string>

namespace platform {

// The host's first IPv4 address, or that of a dotted text; nothing when there is none. Blocks as long as the
// resolver does. Callable from any thread.
std::optional<in_addr> lookUpHost(const std::string& host);

// The same in a thread of its own, which goes on until the resolver gives up, whoever waits for it or not.
// The answer's destructor does not wait.
std::future<std::optional<in_addr>> startHostLookup(std::string host);

// "192.0.2.7"
std::string dottedText(in_addr address);

} // namespace platform
