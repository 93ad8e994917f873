#include "Platform/HostLookup.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cstring>
#include <memory>

namespace platform {

std::optional<in_addr> lookUpHost(const std::string& host) {
    if (host.find('\0') != std::string::npos) return std::nullopt;
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_DGRAM;
    addrinfo* list = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &wanted, &list) != 0) return std::nullopt;
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, &::freeaddrinfo);
    sockaddr_in address{};
    std::memcpy(&address, list->ai_addr, sizeof address);
    return address.sin_addr;
}

} // namespace platform
