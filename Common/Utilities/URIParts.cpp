#include "Common/Utilities/URIParts.h"

#include <cups/http.h>

#include <array>

namespace orvan {

std::optional<URIParts> separateURI(const std::string& uri) {
    std::array<char, HTTP_MAX_URI> scheme{};
    std::array<char, HTTP_MAX_URI> user{};
    std::array<char, HTTP_MAX_URI> host{};
    std::array<char, HTTP_MAX_URI> resource{};
    int port = 0;
    const auto size = [](const auto& buffer) { return static_cast<int>(buffer.size()); };
    const http_uri_status_t status =
        httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme.data(), size(scheme), user.data(),
            size(user), host.data(), size(host), &port, resource.data(), size(resource));
    if (status < HTTP_URI_STATUS_OK || host.front() == '\0') return std::nullopt;
    return URIParts{scheme.data(), host.data(), port, resource.data()};
}

} // namespace orvan
