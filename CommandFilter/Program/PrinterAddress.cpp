#include "CommandFilter/Program/PrinterAddress.h"

#include "Common/Utilities/PrinterURL.h"
#include "Common/Utilities/URIParts.h"

#include <cups/http.h>

#include <array>
#include <charconv>
#include <string_view>

namespace orvan {
namespace {

constexpr const char* kDefaultPath = "/status.xml";
constexpr int kHTTPPort = 80;

// The URL without a user's name and password; empty when it is too long.
std::string withoutUser(const URIParts& url) {
    std::array<char, HTTP_MAX_URI> text{};
    const int port = url.scheme == "http" && url.port == kHTTPPort ? 0 : url.port;
    if (httpAssembleURI(HTTP_URI_CODING_HOSTNAME, text.data(), static_cast<int>(text.size()),
            url.scheme.c_str(), nullptr, url.host.c_str(), port, url.resource.c_str()) != HTTP_URI_STATUS_OK)
        return {};
    return text.data();
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

// A status document at a whole URL.
std::optional<PrinterAddress> addressOfURL(const std::string& deviceURI, const std::string& place) {
    const std::optional<URIParts> url = separateURI(place);
    if (!url || (url->scheme != "http" && url->scheme != "https")) return std::nullopt;
    const std::optional<URIParts> device = separateURI(deviceURI);
    // The host of a discovered device is the name of a service.
    const bool hasHost = device && device->scheme != "dnssd";
    return PrinterAddress{place, withoutUser(*url), hasHost ? device->host : url->host};
}

// One at a path of the device's host.
std::optional<PrinterAddress> addressOfPath(const std::string& deviceURI, const std::string& path) {
    const std::optional<std::string> base = printerURLForDeviceURI(deviceURI);
    const std::optional<URIParts> server = base ? separateURI(*base) : std::nullopt;
    if (!server) return std::nullopt;
    const std::string url = *base + (path.starts_with('/') ? path : '/' + path);
    return PrinterAddress{url, url, server->host};
}

} // namespace

std::optional<PrinterAddress> findPrinterAddress(
    const std::string& deviceURI, ppd_file_t* ppd, platform::Failure& problem) {
    const std::string place = attributeOf(ppd, "OVNStatusDocument");
    std::optional<PrinterAddress> address;
    if (isURL(place)) {
        address = addressOfURL(deviceURI, place);
        problem =
            "The queue's PPD names no web address as OVNStatusDocument. Correct it, or take it out: then "
            "the printer itself is asked.";
    } else {
        address = addressOfPath(deviceURI, place.empty() ? kDefaultPath : place);
        problem =
            "The printer cannot be asked for its status, because the queue's device has no network "
            "address, or is a discovered printer that does not answer now. Give the queue the printer's "
            "address as its device, or put the whole URL of its status document into the PPD as "
            "OVNStatusDocument.";
    }
    if (!address) return std::nullopt;
    if (const std::string agent = attributeOf(ppd, "OVNSNMPAgent"); !agent.empty()) setAgent(*address, agent);
    return address;
}

} // namespace orvan
