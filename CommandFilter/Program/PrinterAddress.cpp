#include "CommandFilter/Program/PrinterAddress.h"

#include "Common/Utilities/PrinterURL.h"
#include "Common/Utilities/URIParts.h"

#include <arpa/inet.h>
#include <cups/http.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <system_error>

namespace orvan {
namespace {

constexpr const char* kDefaultPath = "/status.xml";
constexpr int kHTTPPort = 80;
constexpr int kHTTPSPort = 443;
// The schemes of devices that have an address, and those of them that a print server's queues have as well.
constexpr std::array<std::string_view, 7> kNetworkSchemes{
    "dnssd", "http", "https", "ipp", "ipps", "lpd", "socket"};
constexpr std::array<std::string_view, 4> kQueueSchemes{"http", "https", "ipp", "ipps"};

template <std::size_t count>
bool isOneOf(const std::array<std::string_view, count>& schemes, std::string_view scheme) {
    return std::ranges::find(schemes, scheme) != schemes.end();
}

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

// The first segment of a path has no colon, or what stands before it would be a scheme (RFC 3986, section
// 4.2).
bool isURL(std::string_view text) {
    return text.substr(0, text.find('/')).find(':') != std::string_view::npos;
}

// "host", "host:port", an IPv6 address, "[address]" or "[address]:port". False for anything else.
bool setAgent(PrinterAddress& address, std::string_view agent) {
    const bool isBracketed = agent.starts_with('[');
    const std::size_t colon = agent.rfind(':');
    const bool isAddress = !isBracketed && agent.find(':') != colon;
    const bool hasPort = colon != std::string_view::npos && !isAddress && !agent.ends_with(']');
    std::string_view host = hasPort ? agent.substr(0, colon) : agent;
    if (isBracketed && !host.ends_with(']')) return false;
    if (isBracketed) host = host.substr(1, host.size() - 2);
    in6_addr number{};
    const std::string unzoned(host.substr(0, host.find('%')));
    if ((isAddress || isBracketed) && inet_pton(AF_INET6, unzoned.c_str(), &number) != 1) return false;
    address.snmpHost = host;
    if (!hasPort) return !host.empty();
    const std::string_view port = agent.substr(colon + 1);
    const char* const last = port.data() + port.size();
    const auto [end, error] = std::from_chars(port.data(), last, address.snmpPort);
    constexpr int kMaximumPort = 65535;
    return !host.empty() && error == std::errc() && end == last && address.snmpPort > 0 &&
           address.snmpPort <= kMaximumPort;
}

// A status document at a whole URL.
std::optional<PrinterAddress> addressOfURL(const std::string& deviceURI, const std::string& place) {
    const std::optional<URIParts> url = separateURI(place);
    if (!url || url->port == 0 || (url->scheme != "http" && url->scheme != "https")) return std::nullopt;
    const std::optional<URIParts> device = separateURI(deviceURI);
    // The host of a discovered device is the name of a service.
    const bool hasHost = device && isOneOf(kNetworkSchemes, device->scheme) && device->scheme != "dnssd";
    return PrinterAddress{place, withoutUser(*url), hasHost ? device->host : url->host};
}

std::string schemeOf(const std::string& uri) {
    return uri.substr(0, uri.find(':'));
}

// One at a path of the device's host.
AddressSearch addressOfPath(const std::string& deviceURI, const std::string& path) {
    const std::optional<URIParts> device = separateURI(deviceURI);
    const std::string scheme = schemeOf(deviceURI);
    if (!isOneOf(kNetworkSchemes, scheme))
        return {std::nullopt,
            "This queue's device has no network address: it is " + scheme +
                ": (a printer that is asked has one). Give the queue the printer's address as its device, or "
                "put the "
                "whole URL of its status document into the PPD as OVNStatusDocument.",
            true};
    if (device && isOneOf(kQueueSchemes, scheme) &&
        (device->resource.starts_with("/printers/") || device->resource.starts_with("/classes/")))
        return {std::nullopt, "This queue prints through a queue of another print server, " + device->host +
                                  ", which knows the printer. Ask there (orvan status -H " + device->host +
                                  "), or give the queue the printer's own address as its device."};
    const std::optional<std::string> base = reachableURLForDeviceURI(deviceURI);
    const std::optional<URIParts> server = base ? separateURI(*base) : std::nullopt;
    if (!server)
        return {std::nullopt, "The printer cannot be asked for its status, because it is a discovered "
                              "printer that does not answer "
                              "now, or its device has no host. Give the queue the printer's address as its "
                              "device, or put the whole "
                              "URL of its status document into the PPD as OVNStatusDocument."};
    std::string origin = *base;
    if (scheme == "https" || scheme == "ipps") origin.replace(0, std::string_view("http").size(), "https");
    if (scheme == "https" && device->port != 0 && device->port != kHTTPSPort)
        origin += ':' + std::to_string(device->port);
    const std::string url = origin + (path.starts_with('/') ? path : '/' + path);
    return {PrinterAddress{url, url, server->host}, {}};
}

} // namespace

bool isOnNetwork(const std::string& deviceURI, ppd_file_t* ppd) {
    return isURL(attributeOf(ppd, "OVNStatusDocument")) || isOneOf(kNetworkSchemes, schemeOf(deviceURI));
}

AddressSearch findPrinterAddress(const std::string& deviceURI, ppd_file_t* ppd) {
    const std::string place = attributeOf(ppd, "OVNStatusDocument");
    AddressSearch search;
    if (isURL(place)) {
        // What stands before an "@" may be a password.
        const std::string shown = place.find('@') == std::string::npos ? " (\"" + place + "\")" : "";
        search.address = addressOfURL(deviceURI, place);
        search.problem = "The queue's PPD names no web address as OVNStatusDocument" + shown +
                         ". Correct it, or take it out: then the printer itself is asked.";
    } else {
        search = addressOfPath(deviceURI, place.empty() ? kDefaultPath : place);
    }
    if (!search.address) return search;
    search.problem.clear();
    const std::string agent = attributeOf(ppd, "OVNSNMPAgent");
    if (!agent.empty() && !setAgent(*search.address, agent))
        return {std::nullopt, "The printer is not asked, because the queue's PPD names no SNMP agent: "
                              "OVNSNMPAgent is \"" +
                                  agent +
                                  "\". Write a host, or a host and a port from 1 to 65535 "
                                  "(host:port), or take it out: then the printer itself is asked."};
    return search;
}

} // namespace orvan
