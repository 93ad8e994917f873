#include "Common/Utilities/URIParts.h"

#include <cups/http.h>

#include <algorithm>
#include <array>

namespace orvan {
namespace {

http_uri_status_t separate(const std::string& uri, URIParts& parts) {
    std::array<char, HTTP_MAX_URI> scheme{};
    std::array<char, HTTP_MAX_URI> user{};
    std::array<char, HTTP_MAX_URI> host{};
    std::array<char, HTTP_MAX_URI> resource{};
    const auto size = [](const auto& buffer) { return static_cast<int>(buffer.size()); };
    const http_uri_status_t status =
        httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme.data(), size(scheme), user.data(),
            size(user), host.data(), size(host), &parts.port, resource.data(), size(resource));
    parts.scheme = scheme.data();
    parts.host = host.data();
    parts.resource = resource.data();
    return status;
}

} // namespace

std::optional<URIParts> separateURI(const std::string& uri) {
    URIParts parts;
    http_uri_status_t status = separate(uri, parts);
    // libcups stops at an empty port and at one that is too large.
    if (status == HTTP_URI_STATUS_BAD_PORT) {
        const std::size_t end = std::min(uri.find_first_of("/?#", uri.find("//") + 2), uri.size());
        const std::size_t colon = uri.rfind(':', end);
        status = separate(uri.substr(0, colon) + uri.substr(end), parts);
        if (colon + 1 != end) parts.port = 0;
    }
    if (status < HTTP_URI_STATUS_OK || parts.host.empty()) return std::nullopt;
    return parts;
}

} // namespace orvan
