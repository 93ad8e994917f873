// Whether a host is there: asked for a sign of life first, and for a connection when none comes.
#pragma once

#include <string>

namespace orvan {

struct HostContact {
    bool isThere = false;
    int pingResult = 0;      // SimplePing's (Common/SimplePing.h)
    std::string pingProblem; // for people: why there was no reply; empty when there was one
    std::string problem;     // for people, a clause: why it is not there; empty when it is
};

// The host is a name, an IPv4 address, or an IPv6 address, with brackets or without and with or without a
// zone; the port is a TCP port, from 1.
//
// One echo request is sent. A host that replies is there. Any other result says little: the system may not
// permit the request, a firewall on the way may drop it, and an IPv6 address gets none. The host is there
// then if it accepts a connection to the port, through which nothing is sent. One that refuses it counts as
// not there.
//
// Blocks for a second at most for the reply and for three at most for the connection, and before that for the
// look-up of the host's address (Common/Utilities/HostAddress.h). A host whose look-up takes too long is not
// there. Callable from any thread.
HostContact contactHost(const std::string& host, int port);

// For people, a clause: why SimplePing answered this for the host; empty for 0.
std::string explainPing(int result, const std::string& host);

} // namespace orvan
