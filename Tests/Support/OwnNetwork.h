// A network of a test's own: one loopback interface in a network namespace (Linux, as root).
#pragma once

#include "Tests/Support/Processes.h"

#include <functional>
#include <string>

namespace orvan {

struct OwnNetwork {
    bool multicast = true;           // whether the interface is marked for multicast
    bool hasDownInterface = false;   // a second interface, for multicast, with an address and switched off
    const char* pingGroups = "1\t0"; // who may open ICMP datagram sockets, as in net.ipv4.ping_group_range
};

// What `body` answers in a copy of this process that has this network alone and sees its own mounts. Where
// the system gives no such network: "skip: " and the reason.
std::string inOwnNetwork(const OwnNetwork& network, const std::function<std::string()>& body);

} // namespace orvan

// Skips the test when the answer of inOwnNetwork says so.
#define ORVAN_SKIP_WITHOUT_NETWORK(answer)                                                                   \
    if ((answer).starts_with("skip: ")) GTEST_SKIP() << (answer)
