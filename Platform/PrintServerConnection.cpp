#include "Platform/PrintServerConnection.h"

#include <cups/ppd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string_view>

namespace platform {
namespace {

using Clock = std::chrono::steady_clock;

// From there on a request has this long for each piece of its answer. libcups takes it for no less.
constexpr double kAnswerSeconds = 1;

int giveUp(http_t*, void*) {
    return 0;
}

std::chrono::milliseconds since(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
}

HTTPConnection connect(std::chrono::milliseconds time) {
    return HTTPConnection(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
        static_cast<int>(time.count()), nullptr));
}

// Whether the scheduler answers the smallest of requests by then. The connection is of no use afterwards:
// libcups does not get out of it what belongs to the next request.
bool isAlive(http_t* http, Clock::time_point deadline) {
    // RFC 9112 section 3.2 wants it; libcups does not add it here.
    const char* const server = cupsServer();
    httpSetField(http, HTTP_FIELD_HOST, *server == '/' ? "localhost" : server);
    if (httpOptions(http, "*") != 0) return false;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return httpWait(http, std::max(static_cast<int>(left.count()), 0)) != 0;
}

// The queue's own file of a scheduler on this machine.
std::string ownPPD(const std::string& queue) {
    const std::string_view server = cupsServer();
    if (!server.starts_with('/') && server != "localhost") return {};
    const char* const root = std::getenv("CUPS_SERVERROOT");
    return (root != nullptr ? root : "/etc/cups") + ("/ppd/" + queue + ".ppd");
}

} // namespace

PrintServerConnection::PrintServerConnection(Patience& patience) {
    const auto start = Clock::now();
    const std::chrono::milliseconds time = patience.forOneRequest();
    const HTTPConnection first = connect(time);
    if (first != nullptr && isAlive(first.get(), start + time)) http_ = connect(time);
    if (http_ == nullptr) {
        patience.waitedInVain(since(start));
        return;
    }
    httpSetTimeout(http_.get(), kAnswerSeconds, giveUp, nullptr);
    patience.wasAnswered();
}

PrintServerConnection::PPDFile PrintServerConnection::fetchPPD(const std::string& queue) const {
    if (queue.empty() || queue.find('/') != std::string::npos) return {};
    if (http_ != nullptr) {
        const char* const file = cupsGetPPD2(http_.get(), queue.c_str());
        return file != nullptr ? PPDFile{file, true} : PPDFile{};
    }
    const std::string file = ownPPD(queue);
    return ::access(file.c_str(), R_OK) == 0 ? PPDFile{file, false} : PPDFile{};
}

} // namespace platform
