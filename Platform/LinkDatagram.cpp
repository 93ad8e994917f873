#include "Platform/LinkDatagram.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>
#include <memory>

namespace platform {
namespace {

in_addr_t ipv4Of(const sockaddr* address) {
    sockaddr_in copy{};
    std::memcpy(&copy, address, sizeof copy);
    return copy.sin_addr.s_addr;
}

bool isOnLink(in_addr_t sender) {
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) return false;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || entry->ifa_netmask == nullptr) continue;
        if (entry->ifa_addr->sa_family != AF_INET) continue;
        if (((ipv4Of(entry->ifa_addr) ^ sender) & ipv4Of(entry->ifa_netmask)) == 0) return true;
    }
    return false;
}

} // namespace

std::optional<std::int64_t> receiveFromLink(int socket, std::uint16_t port, std::span<std::uint8_t> buffer) {
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    const ssize_t length =
        ::recvfrom(socket, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&sender), &size);
    if (length < 0) return length;
    const bool counts = sender.sin_port == htons(port) && isOnLink(sender.sin_addr.s_addr);
    return counts ? std::optional<std::int64_t>(length) : std::nullopt;
}

} // namespace platform
