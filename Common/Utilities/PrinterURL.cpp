#include "Common/Utilities/PrinterURL.h"

#include "Common/DNSMessage.h"
#include "Common/RendezvousUtilities.h"
#include "Common/Utilities/URIParts.h"
#include "Formats/TextEncoding.h"

#include <arpa/inet.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace orvan {
namespace {

constexpr std::size_t kMaximumHost = 255;
constexpr std::size_t kAnswerSize = 1500;
constexpr std::string_view kServiceDomain = "._tcp.local.";
// What a URL's host may consist of, RFC 3986 section 3.2.2.
constexpr std::string_view kHostCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=";

std::optional<std::string> hostOfService(const std::string& service) {
    const std::optional<std::string> name = platform::encodeLatin1(service);
    if (!name || name->size() > kMaximumHost) return std::nullopt;
    std::array<std::uint8_t, kAnswerSize> answer{};
    const int length = mDNS_res_query(name->c_str(), kDNSClassIN, kDNSTypeSRV, answer);
    if (length <= static_cast<int>(kDNSHeaderSize)) return std::nullopt;
    return serviceHostInAnswer(
        DNSBytes(answer).first(std::min<std::size_t>(answer.size(), static_cast<std::size_t>(length))));
}

std::string CheckForLocalHost(const URIParts& device) {
    std::string service = device.host;
    // CUPS's own discovery writes the domain without its final dot.
    if (device.scheme == "dnssd" && !service.ends_with('.')) service += '.';
    if (service.find(kServiceDomain) == std::string::npos) return device.host;
    return hostOfService(service).value_or(device.host);
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
    if (host.empty() || host.find_first_not_of(kHostCharacters) != std::string::npos) return std::nullopt;
    return std::string(kScheme) + host;
}

bool isService(std::string_view host) {
    return host.find("._tcp.") != std::string_view::npos || host.find("._udp.") != std::string_view::npos;
}

bool isAddress(const std::string& host) {
    in6_addr address{};
    return ::inet_pton(AF_INET, host.c_str(), &address) == 1 ||
           ::inet_pton(AF_INET6, host.substr(0, host.find('%')).c_str(), &address) == 1;
}

bool isUnderLocal(std::string_view host) {
    if (host.ends_with('.')) host.remove_suffix(1);
    constexpr std::string_view kLocal = ".local";
    return host.size() > kLocal.size() &&
           ::strcasecmp(std::string(host.substr(host.size() - kLocal.size())).c_str(), kLocal.data()) == 0;
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
    std::optional<std::string> url = printerURLForDeviceURI(deviceURI);
    const std::optional<URIParts> found = url ? separateURI(*url) : std::nullopt;
    if (!device || !found) return std::nullopt;
    if (device->scheme != "dnssd" && !isService(device->host)) return url;
    const bool isKept = found->host == device->host && isAddress(found->host);
    if (!isKept && (isService(found->host) || !isUnderLocal(found->host))) return std::nullopt;
    return url;
}

std::optional<std::string> GetPrinterURL(const platform::PMPrinter& printer) {
    std::string deviceURI;
    if (platform::PMPrinterCopyDeviceURI(printer, deviceURI) != platform::kPMNoError) return std::nullopt;
    return printerURLForDeviceURI(deviceURI);
}

} // namespace orvan
