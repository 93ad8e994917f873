#include "Common/Utilities/HostContact.h"

#include "Common/SimplePing.h"
#include "Common/Utilities/HostAddress.h"
#include "Platform/HTTPStream.h"

#include <cups/http.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace orvan {
namespace {

constexpr int kRequests = 1;
constexpr int kReplyTimeout = 200; // milliseconds
constexpr std::chrono::seconds kConnectLimit{3};

std::string withoutBrackets(const std::string& host) {
    const bool hasBrackets = host.starts_with('[') && host.ends_with(']');
    return hasBrackets ? host.substr(1, host.size() - 2) : host;
}

// Empty when they make none.
std::string urlOf(const std::string& host, int port) {
    std::array<char, HTTP_MAX_URI> url{};
    if (host.empty() || port < 1 ||
        httpAssembleURI(static_cast<http_uri_coding_t>(HTTP_URI_CODING_HOSTNAME | HTTP_URI_CODING_RFC6874),
            url.data(), static_cast<int>(url.size()), "http", nullptr, host.c_str(), port,
            "/") != HTTP_URI_STATUS_OK)
        return {};
    return url.data();
}

// Why the host accepts no connection; empty when it does. libcups's own connections are no way to know: it
// forgets the reason, and at the port of HTTPS it begins to speak TLS unasked.
std::string connect(const std::string& host, const std::string& address, int port) {
    using platform::HTTPStreamStatus;
    const auto stream = platform::HTTPStream::create({.url = urlOf(host, port), .address = address});
    if (stream == nullptr) return host + ":" + std::to_string(port) + " is no host and port";
    if (!stream->setConnectsOnly() || !stream->open())
        return "cannot begin to connect to " + stream->server();
    stream->proceed(kConnectLimit);
    if (stream->status() == HTTPStreamStatus::opening)
        return "no connection to " + stream->server() + " within " + std::to_string(kConnectLimit.count()) +
               " seconds";
    std::string nothing;
    return stream->read(nothing, 1) == platform::HTTPRead::failed ? stream->error().problem : "";
}

} // namespace

HostContact contactHost(const std::string& host, int port) {
    const std::string plainHost = withoutBrackets(host);
    const auto [address, lookupProblem] = findHostAddress(plainHost);
    HostContact contact;
    contact.pingResult =
        address.empty() ? EHOSTUNREACH : SimplePing(address.c_str(), kRequests, kReplyTimeout, true);
    contact.pingProblem = lookupProblem.empty() ? explainPing(contact.pingResult, plainHost) : lookupProblem;
    contact.problem = lookupProblem;
    if (lookupProblem.empty() && contact.pingResult != 0) contact.problem = connect(plainHost, address, port);
    contact.isThere = contact.problem.empty();
    return contact;
}

std::string explainPing(int result, const std::string& host) {
    if (result == 0) return {};
    // The number of EPERM also stands for errors without a number, so the system is asked itself.
    platform::FileDescriptor socket;
    const int permission =
        result == EACCES || result == EPERM ? CreateSocketForCommunicationWithHost(&socket) : 0;
    if (permission == EACCES || permission == EPERM)
        return "this system permits nobody in your groups to ask " + host +
               " for a sign of life; as root, \"sysctl net.ipv4.ping_group_range='0 2147483647'\" permits it "
               "to all";
    if (result == -1) return host + " does not answer";
    if (result == EHOSTUNREACH) return host + " has no IPv4 address, or no way leads to it";
    return host + " cannot be asked: " + std::strerror(result);
}

} // namespace orvan
