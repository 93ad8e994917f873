// What counts as a datagram of the link.
#include "Platform/LinkDatagram.h"
#include "Platform/FileDescriptor.h"
#include "Tests/Support/OwnNetwork.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace orvan {
namespace {

sockaddr_in address(const char* host, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    inet_pton(AF_INET, host, &address.sin_addr);
    return address;
}

platform::FileDescriptor boundTo(std::uint16_t port) {
    platform::FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0));
    const sockaddr_in place = address("127.0.0.1", port);
    if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0) std::perror("bind");
    return socket;
}

void send(const platform::FileDescriptor& from, const char* text) {
    const sockaddr_in place = address("127.0.0.1", 1000);
    if (sendto(from.get(), text, std::strlen(text), 0, reinterpret_cast<const sockaddr*>(&place),
            sizeof place) < 0)
        std::perror("sendto");
}

// The loopback interface has this address alone.
bool moveLoopback(const char* host) {
    const platform::FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM, 0));
    ifreq request{};
    std::snprintf(request.ifr_name, sizeof request.ifr_name, "lo");
    const sockaddr_in place = address(host, 0);
    std::memcpy(&request.ifr_addr, &place, sizeof place);
    return ioctl(socket.get(), SIOCSIFADDR, &request) == 0;
}

std::string take(const platform::FileDescriptor& socket) {
    std::array<std::uint8_t, 16> buffer{};
    const auto length = platform::receiveFromLink(socket.get(), 5353, buffer);
    if (!length) return "nothing, ";
    return *length < 0 ? std::string("error, ")
                       : std::string(buffer.begin(), buffer.begin() + *length) + ", ";
}

TEST(LinkDatagram, ComesFromThePortOfAnAddressOnTheLink) {
    const std::string answer = inOwnNetwork({}, [] {
        const platform::FileDescriptor receiver = boundTo(1000);
        const platform::FileDescriptor responder = boundTo(5353);
        const platform::FileDescriptor stranger = boundTo(5354);
        send(stranger, "spoofed");
        send(responder, "answer");
        send(responder, "");
        std::string taken;
        for (int i = 0; i < 4; ++i)
            taken += take(receiver);
        // It was sent from an address that is no neighbour's when it is looked at.
        send(responder, "from afar");
        if (!moveLoopback("192.0.2.1")) return std::string("skip: no other address for the interface");
        return taken + take(receiver);
    });
    ORVAN_SKIP_WITHOUT_NETWORK(answer);
    EXPECT_EQ(answer, "nothing, answer, , error, nothing, ");
}

} // namespace
} // namespace orvan
