#include "Common/SimplePing.h"
#include "Common/Utilities/PrinterIsReachable.h"
#include "Tests/Support/OwnNetwork.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

constexpr OwnNetwork kMayPing{.pingGroups = "0\t2147483647"};

// Datagrams to a socket that is no ICMP socket, so that it can be given anything. What stands for its
// identifier is its port.
class Mailbox {
public:
    Mailbox() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        const timeval second{1, 0};
        ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &second, sizeof second);
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address_;
        if (::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address_), size) != 0)
            std::perror("mailbox");
        ::getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&address_), &size);
    }

    int socket() const { return socket_.get(); }
    std::uint16_t identifier() const { return address_.sin_port; }
    void put(const Bytes& datagram) const {
        ::sendto(socket_.get(), datagram.data(), datagram.size(), 0,
            reinterpret_cast<const sockaddr*>(&address_), sizeof address_);
    }
    Bytes take() const {
        Bytes datagram(2048);
        const ssize_t length = ::recv(socket_.get(), datagram.data(), datagram.size(), 0);
        datagram.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
        return datagram;
    }
    sockaddr_in address() const { return address_; }

private:
    platform::FileDescriptor socket_;
    sockaddr_in address_{};
};

// The identifier is in network byte order.
Bytes message(std::uint8_t type, std::uint16_t identifier, std::size_t size = 48) {
    Bytes bytes(48);
    bytes[0] = type;
    std::memcpy(&bytes[4], &identifier, sizeof identifier);
    bytes.resize(size);
    return bytes;
}

TEST(SimplePing, refusesArgumentsBeforeAnythingIsDone) {
    EXPECT_EQ(SimplePing(nullptr, 1, 200, true), EINVAL);
    EXPECT_EQ(SimplePing("nowhere.invalid", 0, 200, true), EINVAL);
    EXPECT_EQ(SimplePing("nowhere.invalid", 1, 0, true), EINVAL);
    bool seen = true;
    EXPECT_EQ(WaitAndPrintICMPs(-1, 0, true, &seen), EINVAL);
    EXPECT_EQ(WaitAndPrintICMPs(-1, 1, true, nullptr), EINVAL);
    EXPECT_EQ(WaitAndPrintICMPs(-1, 1, true, &seen), EBADF);
    EXPECT_FALSE(seen);
    for (const char* const url : {"", "http://", "/status.xml", "file:///x", "http://%C4%80/"})
        EXPECT_FALSE(PrinterIsReachable(url)) << url;
    EXPECT_FALSE(PrinterIsReachable(std::nullopt));
}

TEST(SimplePing, looksHostsUp) {
    sockaddr_in address{};
    std::memset(&address, 0xFF, sizeof address);
    EXPECT_EQ(LookupHostAddress("192.0.2.7", &address), 0);
    EXPECT_EQ(address.sin_family, AF_INET);
    EXPECT_EQ(address.sin_port, 0);
    EXPECT_STREQ(inet_ntoa(address.sin_addr), "192.0.2.7");
    const std::string answer = inOwnNetwork({}, [] {
        sockaddr_in none{};
        return std::to_string(LookupHostAddress("printer.example", &none));
    });
    ORVAN_SKIP_WITHOUT_NETWORK(answer);
    EXPECT_EQ(answer, std::to_string(EHOSTUNREACH));
}

TEST(SimplePing, sendsWholeRequests) {
    const Mailbox mailbox;
    const auto before = static_cast<std::int64_t>(time(nullptr));
    ASSERT_EQ(CreateAndSendICMPPacket(mailbox.address(), 0x10002, mailbox.socket()), 0);
    const Bytes request = mailbox.take();
    ASSERT_EQ(request.size(), 48U);
    EXPECT_EQ(request[0], 8);
    EXPECT_EQ(request[1], 0);
    EXPECT_EQ(in_cksum(request), 0);
    std::uint16_t number = 0;
    std::memcpy(&number, &request[4], sizeof number);
    EXPECT_EQ(number, static_cast<std::uint16_t>(getpid()));
    std::memcpy(&number, &request[6], sizeof number);
    EXPECT_EQ(number, 2);
    std::int64_t seconds = 0;
    std::memcpy(&seconds, &request[32], sizeof seconds);
    EXPECT_TRUE(before <= seconds && seconds <= time(nullptr)) << seconds;
    EXPECT_EQ(CreateAndSendICMPPacket(mailbox.address(), 0, -1), EBADF);
}

TEST(SimplePing, sumsAsTheInternetDoes) {
    EXPECT_EQ(in_cksum({}), 0xFFFF);
    EXPECT_EQ(in_cksum(Bytes{1}), 0xFFFE);
    EXPECT_EQ(ntohs(in_cksum(Bytes{0x00, 0x01, 0xF2, 0x03, 0xF4, 0xF5, 0xF6, 0xF7})), 0x220D); // RFC 1071
    EXPECT_EQ(in_cksum(Bytes(50, 0xFF)), 0);
}

TEST(SimplePing, knowsItsRepliesAmongAnythingElse) {
    const Mailbox mailbox;
    const std::uint16_t own = mailbox.identifier();
    const auto other = static_cast<std::uint16_t>(own + 1);
    const struct {
        const char* what;
        std::vector<Bytes> datagrams;
        bool first; // return after the first datagram
        int result;
    } cases[] = {
        {"the reply", {message(0, own)}, true, 0},
        {"a longer one", {message(0, own, 1000)}, true, 0},
        {"one that is too short", {message(0, own, 47)}, true, -1},
        {"four bytes", {message(0, own, 4)}, true, -1},
        {"an empty datagram", {{}}, true, -1},
        {"somebody's request", {message(8, own)}, true, -1},
        {"another one's reply", {message(0, other)}, true, -1},
        {"another one's reply before", {message(0, other), message(0, own)}, true, -1},
        {"all of that before", {message(0, other), message(8, own), {}, message(0, own)}, false, 0},
    };
    for (const auto& [what, datagrams, first, result] : cases) {
        for (const Bytes& datagram : datagrams)
            mailbox.put(datagram);
        bool seen = false;
        EXPECT_EQ(WaitAndPrintICMPs(mailbox.socket(), 900, first, &seen), result) << what;
        EXPECT_EQ(seen, result == 0) << what;
        while (::recv(mailbox.socket(), nullptr, 0, MSG_DONTWAIT) >= 0) {
        }
    }
}

TEST(SimplePing, endsInAFloodOfOthersReplies) {
    const Mailbox mailbox;
    std::jthread flood([&](const std::stop_token& stop) {
        while (!stop.stop_requested())
            mailbox.put(message(8, 0));
    });
    const auto start = Clock::now();
    bool seen = false;
    EXPECT_EQ(WaitAndPrintICMPs(mailbox.socket(), 300, false, &seen), -1);
    EXPECT_GE(Clock::now() - start, 300ms);
}

TEST(SimplePing, pingsWhereTheSystemPermitsIt) {
    const std::string answer = inOwnNetwork(kMayPing, [] {
        std::ostringstream results;
        const auto timed = [&](const char* host, int count, int timeout, bool first, double seconds = 0) {
            const auto start = Clock::now();
            results << SimplePing(host, count, timeout, first);
            const double time = std::chrono::duration<double>(Clock::now() - start).count();
            results << (time > seconds ? ", " : " early, ");
        };
        timed("127.0.0.1", 3, 200, true);
        timed("localhost", 1, 1, false, 0.9); // the time-out begins with the first datagram
        results << PrinterIsReachable("http://127.0.0.2:631/status.xml") << ", ";
        timed("192.0.2.7", 1, 200, true); // there is no way to it
        // Nobody at the address answers from now on.
        std::ofstream("/proc/sys/net/ipv4/icmp_echo_ignore_all") << "1" << std::endl;
        timed("127.0.0.1", 3, 200, true, 0.9);
        results << PrinterIsReachable("http://127.0.0.1/");
        return results.str();
    });
    ORVAN_SKIP_WITHOUT_NETWORK(answer);
    EXPECT_EQ(answer, "0, 0, 1, " + std::to_string(ENETUNREACH) + ", -1, 0");
}

} // namespace
} // namespace orvan
