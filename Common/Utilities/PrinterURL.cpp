#include "Common/Utilities/PrinterURL.h"

#include "Common/DNSMessage.h"
#include "Common/RendezvousUtilities.h"
#include "Common/Utilities/HostAddress.h"
#include "Common/Utilities/URIParts.h"
#include "Formats/TextEncoding.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace orvan {
namespace {

constexpr std::size_t kMaximumHost = 255;
constexpr std::size_t kAnswerSize = 1500;
constexpr std::string_view kServiceDomain = "._tcp.local.";
// What a URL's host may consist of, RFC 3986 section 3.2.2.
constexpr std::string_view kHostCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=";

using Question = int (*)(const char* name, int queryClass, int type, std::span<std::uint8_t> answer);

// As resolvers read it: dots and backslashes of the instance's name, which is one label, are characters
// (RFC 6763, section 4.3).
std::string withEscapedInstance(const std::string& service) {
    const std::size_t domain = service.find(kServiceDomain);
    const std::size_t type = domain != 0 ? service.rfind('.', domain - 1) : std::string::npos;
    if (domain == std::string::npos || type == std::string::npos) return service;
    std::string name;
    for (const char c : service.substr(0, type)) {
        if (c == '.' || c == '\\') name += '\\';
        name += c;
    }
    return name + service.substr(type);
}

std::optional<std::string> hostOfService(const std::optional<std::string>& service, Question ask) {
    if (!service || service->size() > kMaximumHost) return std::nullopt;
    std::array<std::uint8_t, kAnswerSize> answer{};
    const std::string name = withEscapedInstance(*service);
    const int length = ask(name.c_str(), kDNSClassIN, kDNSTypeSRV, answer);
    if (length <= static_cast<int>(kDNSHeaderSize)) return std::nullopt;
    return serviceHostInAnswer(
        DNSBytes(answer).first(std::min<std::size_t>(answer.size(), static_cast<std::size_t>(length))));
}

std::string CheckForLocalHost(const URIParts& device) {
    std::string service = device.host;
    // CUPS's own discovery writes the domain without its final dot.
    if (device.scheme == "dnssd" && !service.ends_with('.')) service += '.';
    if (service.find(kServiceDomain) == std::string::npos) return device.host;
    return hostOfService(platform::encodeLatin1(service), mDNS_res_query).value_or(device.host);
}

// Names of services are UTF-8 (RFC 6763, section 4.1.1); old devices have them in Latin-1.
std::optional<std::string> liveHostOfService(const std::string& service) {
    std::optional<std::string> host = hostOfService(service, askLocalNetwork);
    if (host || platform::decodeASCII(service)) return host;
    return hostOfService(platform::encodeLatin1(service), askLocalNetwork);
}

std::optional<std::string> urlOfHost(const std::string& host) {
    constexpr std::string_view kScheme = "http://";
    const std::size_t zone = host.find('%');
    in6_addr address{};
    if (::inet_pton(AF_INET6, host.substr(0, zone).c_str(), &address) == 1) {
        // RFC 6874
        const std::string zoneText = zone == std::string::npos ? "" : "%25" + host.substr(zone + 1);
        if (zoneText.find_first_not_of(kHostCharacters, 3) != std::string::npos) return std::nullopt;
        return std::string(kScheme) + "[" + host.substr(0, zone) + zoneText + "]";
    }
    std::string url(kScheme);
    for (const char c : host) {
        if (c != '%' && kHostCharacters.find(c) == std::string_view::npos) return std::nullopt;
        url += c;
        if (c == '%') url += "25";
    }
    return host.empty() ? std::nullopt : std::optional(url);
}

bool isService(std::string_view host) {
    return host.find("._tcp.") != std::string_view::npos || host.find("._udp.") != std::string_view::npos;
}

bool isAddress(const std::string& host) {
    in6_addr address{};
    return ::inet_pton(AF_INET, host.c_str(), &address) == 1 ||
           ::inet_pton(AF_INET6, host.substr(0, host.find('%')).c_str(), &address) == 1;
}

} // namespace

std::optional<std::string> serviceHostInAnswer(DNSBytes message) {
    constexpr std::size_t kQuestionCountPosition = 4;
    DNSCursor header(message, kQuestionCountPosition);
    const std::optional<std::uint16_t> questions = header.number();
    const std::optional<std::uint16_t> answers = header.number();
    if (!answers || *answers == 0) return std::nullopt;

    std::size_t position = kDNSHeaderSize;
    for (unsigned i = 0; i < *questions; ++i)
        if (skip_question(&position, message) != 0) return std::nullopt;

    std::size_t typePosition = position;
    std::string target;
    if (decode_srv(&position, message, &target, nullptr) != 0) return std::nullopt;
    decode_name(&typePosition, message, nullptr);
    if (DNSCursor(message, typePosition).number() != kDNSTypeSRV) return std::nullopt;
    return platform::decodeASCII(target);
}

std::optional<std::string> printerURLForDeviceURI(const std::string& deviceURI) {
    const std::optional<URIParts> device = separateURI(deviceURI);
    return device ? urlOfHost(CheckForLocalHost(*device)) : std::nullopt;
}

std::optional<std::string> reachableURLForDeviceURI(const std::string& deviceURI) {
    const std::optional<URIParts> device = separateURI(deviceURI);
    if (!device) return std::nullopt;
    const bool isOfService = isService(device->host);
    const bool isHost = device->scheme != "dnssd" || isAddress(device->host) || isUnderLocal(device->host);
    if (!isOfService) return isHost ? urlOfHost(device->host) : std::nullopt;
    const std::string dot = device->host.ends_with('.') ? "" : ".";
    if (!isUnderLocal(device->host)) return std::nullopt;
    const std::optional<std::string> host = liveHostOfService(device->host + dot);
    const bool isRight = host && !isService(*host) && isUnderLocal(*host);
    return isRight ? urlOfHost(*host) : std::nullopt;
}

std::optional<std::string> GetPrinterURL(const platform::PMPrinter& printer) {
    std::string deviceURI;
    if (platform::PMPrinterCopyDeviceURI(printer, deviceURI) != platform::kPMNoError) return std::nullopt;
    return printerURLForDeviceURI(deviceURI);
}

} // namespace orvan
