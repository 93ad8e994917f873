#include "Common/Utilities/HostContact.h"
#include "Tests/Support/OwnNetwork.h"
#include "Tests/Support/ScriptedServer.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <fstream>

namespace orvan {
namespace {

using Clock = std::chrono::steady_clock;

constexpr OwnNetwork kPermitted{.pingGroups = "0\t2147483647"};
constexpr int kPort = 443; // where a library might speak TLS unasked
constexpr int kClosedPort = 9;
constexpr int kFullPort = 0; // stands for a full server's

// For IPv6 and IPv4; none when the system has no IPv6.
platform::FileDescriptor listenAtPort() {
    platform::FileDescriptor listener(::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(kPort);
    if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener.get(), SOMAXCONN) != 0)
        listener.reset();
    return listener;
}

// What the listener sees of a contact that is over.
std::string seenBy(const platform::FileDescriptor& listener) {
    pollfd source{listener.get(), POLLIN, 0};
    if (::poll(&source, 1, 100) <= 0) return "no connection";
    const platform::FileDescriptor client(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    char byte = 0;
    return ::recv(client.get(), &byte, 1, MSG_WAITALL) == 0 ? "a silent connection" : "bytes";
}

// Not before so many seconds.
std::string contact(const std::string& host, int port, double leastTime) {
    const platform::FileDescriptor listener = listenAtPort();
    if (!listener) return "skip: no IPv6";
    const FullServer full;
    const auto start = Clock::now();
    const HostContact found = contactHost(host, port == kFullPort ? full.port() : port);
    // What is found out by an event has no least time.
    const std::chrono::duration<double> time = Clock::now() - start;
    const std::string waited = time.count() >= leastTime ? "" : " too early";
    return seenBy(listener) + waited + (found.isThere ? ": there" : ": absent, ") + found.problem + "; " +
           (found.pingResult == 0 ? "a reply" : "") + found.pingProblem;
}

TEST(HostContact, FindsOutWhetherAHostIsThere) {
    struct Case {
        OwnNetwork network;
        const char* host;
        int port;
        bool ignoresEchoes;
        std::string answer; // its beginning
        double leastTime = 0;
    };
    const Case cases[] = {
        {kPermitted, "127.0.0.1", kPort, false, "no connection: there; a reply"},
        {kPermitted, "127.0.0.1", kClosedPort, false, "no connection: there; a reply"},
        {kPermitted, "127.0.0.1", kPort, true, "a silent connection: there; 127.0.0.1 does not answer", 0.9},
        {{}, "127.0.0.1", kPort, false,
            "a silent connection: there; this system permits nobody in your groups to ask 127.0.0.1"},
        {{}, "::1", kPort, false, "a silent connection: there; ::1 has no IPv4 address, or no way"},
        {{}, "[::1]", kPort, false, "a silent connection: there; ::1 has no IPv4 address, or no way"},
        {{}, "localhost", kClosedPort, false,
            "no connection: absent, cannot connect to localhost:9: Connection refused; this system"},
        {{}, "::1", kClosedPort, false,
            "no connection: absent, cannot connect to [::1]:9: Connection refused; "},
        {{}, "192.0.2.1", kPort, false,
            "no connection: absent, cannot connect to 192.0.2.1:443: Network is unreachable; "},
        {{}, "printer.invalid", kPort, false,
            "no connection: absent, the name of printer.invalid:443 cannot be resolved; "},
        {{}, "", kPort, false, "no connection: absent, :443 is no host and port; "},
        {{}, "127.0.0.1", kFullPort, false, "no connection: absent, no connection to 127.0.0.1:", 2.9},
    };
    for (const Case& one : cases) {
        const std::string answer = inOwnNetwork(one.network, [&one] {
            std::ofstream("/proc/sys/net/ipv4/icmp_echo_ignore_all") << one.ignoresEchoes << std::endl;
            return contact(one.host, one.port, one.leastTime);
        });
        ORVAN_SKIP_WITHOUT_NETWORK(answer);
        EXPECT_EQ(answer.substr(0, one.answer.size()), one.answer) << one.host << ' ' << one.port;
    }
}

} // namespace
} // namespace orvan
