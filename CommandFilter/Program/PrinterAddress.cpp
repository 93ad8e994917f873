#include "CommandFilter/Program/PrinterAddress.h"

#include <cups/http.h>

#include <array>
#include <charconv>
#include <string_view>

namespace orvan {
namespace {

constexpr const char* kDefaultPath = "/status.xml";

struct URLParts {
    std::string scheme;
    std::string host;
    int port = 0;
    std::string resource;
};

std::optional<URLParts> separate(const std::string& url) {
    std::array<char, HTTP_MAX_URI> scheme{};
    std::array<char, HTTP_MAX_URI> user{};
    std::array<char, HTTP_MAX_URI> host{};
    std::array<char, HTTP_MAX_URI> resource{};
    URLParts parts;
    const auto size = [](const auto& buffer) { return static_cast<int>(buffer.size()); };
    if (httpSeparateURI(HTTP_URI_CODING_ALL, url.c_str(), scheme.data(), size(scheme), user.data(),
            size(user), host.data(), size(host), &parts.port, resource.data(),
            size(resource)) < HTTP_URI_STATUS_OK)
        return std::nullopt;
    parts.scheme = scheme.data();
    parts.host = host.data();
    parts.resource = resource.data();
    return parts;
}

// Empty when it does not fit.
std::string assemble(const URLParts& parts) {
    std::array<char, HTTP_MAX_URI> url{};
    const int port = parts.scheme == "http" && parts.port == 80 ? 0 : parts.port;
    if (httpAssembleURI(HTTP_URI_CODING_HOSTNAME, url.data(), static_cast<int>(url.size()),
            parts.scheme.c_str(), nullptr, parts.host.c_str(), port,
            parts.resource.c_str()) != HTTP_URI_STATUS_OK)
        return {};
    return url.data();
}

std::string attributeOf(ppd_file_t* ppd, const char* name) {
    const ppd_attr_t* const attribute = ppdFindAttr(ppd, name, nullptr);
    return attribute != nullptr && attribute->value != nullptr ? attribute->value : "";
}

bool isURL(std::string_view text) {
    return text.find("://") != std::string_view::npos;
}

// "host", "host:port", an IPv6 address, "[address]" or "[address]:port".
void setAgent(PrinterAddress& address, std::string_view agent) {
    const bool isBracketed = agent.starts_with('[');
    const std::size_t colon = agent.rfind(':');
    const bool isAddress = !isBracketed && agent.find(':') != colon;
    const bool hasPort = colon != std::string_view::npos && !isAddress && !agent.ends_with(']');
    std::string_view host = hasPort ? agent.substr(0, colon) : agent;
    if (isBracketed) host = host.substr(1, host.find(']') - 1);
    address.snmpHost = host;
    if (!hasPort) return;
    const std::string_view port = agent.substr(colon + 1);
    std::from_chars(port.data(), port.data() + port.size(), address.snmpPort);
}

} // namespace

std::optional<PrinterAddress> findPrinterAddress(
    const std::string& deviceURI, ppd_file_t* ppd, std::string* problem) {
    const std::optional<URLParts> device = separate(deviceURI);
    const std::string deviceHost = device ? device->host : "";
    const std::string place = attributeOf(ppd, "OVNStatusDocument");

    PrinterAddress address;
    if (isURL(place)) {
        address.documentURL = place;
        const std::optional<URLParts> url = separate(place);
        if (!url || (url->scheme != "http" && url->scheme != "https")) {
            *problem = "The queue's PPD names no web address as OVNStatusDocument. Correct it, or take it "
                       "out: then the printer itself is asked.";
            return std::nullopt;
        }
        address.shownURL = assemble(*url);
        address.snmpHost = deviceHost.empty() ? url->host : deviceHost;
    } else {
        if (deviceHost.empty()) {
            *problem = "The printer cannot be asked for its status, because the queue's device has no "
                       "network address. Give the queue the printer's address as its device, or put the "
                       "whole URL of its status document into the PPD as OVNStatusDocument.";
            return std::nullopt;
        }
        const std::string path = place.empty() ? kDefaultPath : place;
        address.documentURL = assemble({"http", deviceHost, 0, path.starts_with('/') ? path : '/' + path});
        address.shownURL = address.documentURL;
        address.snmpHost = deviceHost;
    }
    if (const std::string agent = attributeOf(ppd, "OVNSNMPAgent"); !agent.empty()) setAgent(address, agent);
    return address;
}

} // namespace orvan
