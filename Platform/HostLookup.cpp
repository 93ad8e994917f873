#include "Platform/HostLookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <cstring>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

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

std::future<std::optional<in_addr>> startHostLookup(std::string host) {
    using Answer = std::optional<in_addr>;
    std::packaged_task<Answer()> lookup([host = std::move(host)] { return lookUpHost(host); });
    std::future<Answer> answer = lookup.get_future();
    try {
        std::thread(std::move(lookup)).detach();
    } catch (const std::system_error&) {
        std::promise<Answer> none; // the system gives no thread
        answer = none.get_future();
        none.set_value(std::nullopt);
    }
    return answer;
}

std::string dottedText(in_addr address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &address, text.data(), text.size());
    return text.data();
}

} // namespace platform
