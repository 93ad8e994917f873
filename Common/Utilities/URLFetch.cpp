#include "Common/Utilities/URLFetch.h"

#include "Common/Utilities/HostAddress.h"
#include "Common/Utilities/IdleTimer.h"
#include "Common/Utilities/URIParts.h"
#include "Platform/Gestalt.h"
#include "Platform/HTTPStream.h"
#include "Platform/TickCount.h"

#include <strings.h>

#include <cstdio>
#include <memory>
#include <sstream>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

using Clock = std::chrono::steady_clock;
using platform::HTTPStream;
using platform::HTTPStreamStatus;

constexpr std::size_t kReadChunk = 32768;
constexpr std::int32_t kTenFive = 0x1050; // packed
constexpr std::chrono::milliseconds kOpeningSlice{50};
constexpr std::string_view kHTTPS = "https";

// One of the two ways to a document.
struct Way {
    platform::TLSSettings tls;
    bool followsRedirects = false;
    bool readsOnlyAvailable = false; // a read of older systems' encrypted streams blocks for ever
};

struct Outcome {
    FetchResult result;
    std::optional<platform::HTTPStreamError> readError;
    bool overTLS = false; // by the way without checks
};

// A single fetch by one way.
class Fetch {
public:
    Fetch(const FetchRequest& request, Clock::time_point deadline) : request_(request), deadline_(deadline) {}

    Outcome run(const std::string& url, const Way& way);

private:
    void transfer(HTTPStream& stream, const Way& way);
    // Each answers whether the transfer goes on.
    bool takeTurn(HTTPStream& stream, const Way& way, IdleTimer& idle);
    bool readOnce(HTTPStream& stream, IdleTimer& idle);
    bool isInTime(const HTTPStream& stream, IdleTimer& idle);

    const FetchRequest& request_;
    Clock::time_point deadline_;
    Outcome outcome_;
};

std::string seconds(std::chrono::duration<double> time) {
    std::ostringstream text;
    text << time.count() << (time.count() == 1 ? " second" : " seconds");
    return text.str();
}

// Of a host under "local", which the library's own look-up finds only where the system's resolver does.
std::string localAddressOf(const std::string& url) {
    const std::optional<URIParts> parts = separateURI(url);
    return parts && isUnderLocal(parts->host) ? findHostAddress(parts->host).address : "";
}

Outcome Fetch::run(const std::string& url, const Way& way) {
    const std::unique_ptr<HTTPStream> stream =
        HTTPStream::create({url, request_.user, request_.password, localAddressOf(url)}, way.tls);
    if (stream == nullptr) {
        outcome_.result.problem = "this is not the URL of a web server (http://... or https://...)";
    } else if ((way.followsRedirects && !stream->setAutoRedirect(true)) || !stream->open()) {
        outcome_.result.problem = "cannot begin to ask " + stream->server();
    } else {
        transfer(*stream, way);
        outcome_.result.status = stream->responseStatus();
        outcome_.result.redirect = stream->redirectURL();
        outcome_.result.charset = stream->charset();
        stream->close();
    }
    return std::move(outcome_);
}

void Fetch::transfer(HTTPStream& stream, const Way& way) {
    IdleTimer idle(platform::TickCount());
    while (takeTurn(stream, way, idle) && isInTime(stream, idle)) {
    }
}

bool Fetch::takeTurn(HTTPStream& stream, const Way& way, IdleTimer& idle) {
    switch (stream.status()) {
    case HTTPStreamStatus::opening:
        stream.proceed(kOpeningSlice);
        if (stream.status() != HTTPStreamStatus::opening) idle.restart(platform::TickCount());
        return true;
    case HTTPStreamStatus::atEnd:
    case HTTPStreamStatus::closed:
    case HTTPStreamStatus::error:
        return false;
    case HTTPStreamStatus::notOpen:
    case HTTPStreamStatus::open:
    case HTTPStreamStatus::reading:
    case HTTPStreamStatus::writing:
        break;
    }
    if (!way.readsOnlyAvailable || stream.hasBytesAvailable()) return readOnce(stream, idle);
    stream.proceed(kOpeningSlice);
    return true;
}

bool Fetch::readOnce(HTTPStream& stream, IdleTimer& idle) {
    std::string& bytes = outcome_.result.bytes;
    switch (stream.read(bytes, kReadChunk)) {
    case platform::HTTPRead::nothingYet:
        return true;
    case platform::HTTPRead::failed:
        outcome_.readError = stream.error();
        outcome_.result.problem = stream.error().problem;
        return false;
    case platform::HTTPRead::bytes:
    case platform::HTTPRead::end:
        break;
    }
    idle.restart(platform::TickCount());
    if (bytes.size() <= request_.maximumSize) return true;
    bytes.resize(request_.maximumSize);
    outcome_.result.problem =
        "the answer of " + stream.server() + " is larger than " + std::to_string(bytes.size()) + " bytes";
    return false;
}

// Why nothing more is waited for.
std::string describeSilence(const HTTPStream& stream) {
    const std::string limit = seconds(platform::Ticks{IdleTimer::kLimit});
    if (stream.status() != HTTPStreamStatus::opening)
        return stream.server() + " fell silent for " + limit + " in the middle of its answer";
    return (stream.isAnswering() ? "no whole header of the answer from " : "no answer from ") +
           stream.server() + " within " + limit;
}

bool Fetch::isInTime(const HTTPStream& stream, IdleTimer& idle) {
    if (stream.status() == HTTPStreamStatus::atEnd) return true;
    if (idle.hasPassed(platform::TickCount()))
        outcome_.result.problem = describeSilence(stream);
    else if (Clock::now() > deadline_)
        outcome_.result.problem =
            "the answer of " + stream.server() + " was not complete within " + seconds(request_.maximumTime);
    else
        return true;
    return false;
}

std::string overHTTPS(std::string url) {
    constexpr std::size_t kSchemeSize = std::string_view("http").size();
    if (strncasecmp(url.c_str(), "https:", kHTTPS.size() + 1) == 0) return url;
    return url.replace(0, kSchemeSize, kHTTPS);
}

Outcome withoutURL() {
    Outcome outcome;
    outcome.result.problem = "there is no URL";
    return outcome;
}

Outcome fetchOverTLS(const FetchRequest& request, Clock::time_point deadline) {
    if (!request.url) return withoutURL();
    // A platform that does not tell the packed version needs none of the care that older releases did. It
    // makes no difference here when the credentials join the request, only how the stream is read.
    std::int32_t version = kTenFive;
    platform::Gestalt(platform::kGestaltSystemVersion, &version);
    std::string certificate;
    platform::Failure refusal;
    const auto takes = [&](const std::string& server, const std::string& fingerprint) {
        certificate = fingerprint;
        if (request.examineCertificate) refusal = request.examineCertificate(server, fingerprint);
        return !refusal;
    };
    const Way way{{false, false, takes}, false, version < kTenFive};
    Outcome outcome = Fetch(request, deadline).run(overHTTPS(*request.url), way);
    outcome.result.uncheckedCertificate = certificate;
    if (refusal) outcome.result.problem = *refusal;
    outcome.overTLS = true;
    return outcome;
}

Outcome fetch(const FetchRequest& request) {
    if (!request.url) return withoutURL();
    const Clock::time_point deadline = Clock::now() + request.maximumTime;
    Outcome outcome = Fetch(request, deadline).run(*request.url, {{}, request.followsRedirects, false});
    if (!outcome.readError || !isTLSErrorCode(outcome.readError->code)) return outcome;
    const std::string first = outcome.result.problem;
    outcome = fetchOverTLS(request, deadline);
    // What a person has to know about the certificate does not depend on what else went wrong.
    std::string& second = outcome.result.problem;
    if (!second.empty() && second != first)
        second.append(" (asked again after this: ").append(first).append(")");
    return outcome;
}

std::string bytesOf(Outcome outcome) {
    if (outcome.overTLS && outcome.readError) {
        std::printf("\n bytesRead is < 0 cfErr.Error = %ld  \n domain = %ld \n",
            static_cast<long>(outcome.readError->code), static_cast<long>(outcome.readError->domain));
        std::fflush(stdout);
    }
    return std::move(outcome.result.bytes);
}

} // namespace

bool isTLSErrorCode(std::int32_t code) {
    return code >= -9848 && code <= -9801;
}

FetchResult fetchDocument(const FetchRequest& request) {
    return fetch(request).result;
}

std::string GetURLWithAuthentication(const std::optional<std::string>& url,
    const std::optional<std::string>& user, const std::optional<std::string>& password) {
    return GetURLWithAuthentication_CFNetwork(url, user, password);
}

std::string GetURLWithAuthentication_CFNetwork(const std::optional<std::string>& url,
    const std::optional<std::string>& user, const std::optional<std::string>& password) {
    return bytesOf(fetch({url, user, password}));
}

std::string GetURLWithAuthentication_SSL(const std::optional<std::string>& url,
    const std::optional<std::string>& user, const std::optional<std::string>& password) {
    const FetchRequest request{url, user, password};
    return bytesOf(fetchOverTLS(request, Clock::now() + request.maximumTime));
}

std::string MyXMLTreeCreateWithDataFromURL(const std::optional<std::string>& url) {
    return GetURLWithAuthentication(url, std::nullopt, std::nullopt);
}

} // namespace orvan
