// Fetches from servers that answer well, badly, slowly and not at all.
#include "Common/Utilities/URLFetch.h"
#include "Common/Utilities/IdleTimer.h"
#include "Platform/HTTPStream.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/ScriptedServer.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <future>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using Then = ScriptedAnswer::Then;

constexpr const char* kStatus = "HTTP/1.1 200 OK\r\n";

std::string redirectTo(const std::string& url) {
    return "HTTP/1.1 302 Found\r\nContent-Length: 3\r\nLocation: " + url + "\r\n\r\nold";
}

const std::vector<ScriptedAnswer> kAnswers{
    {"/whole", wholeAnswer("hello")},
    {"/empty", wholeAnswer("")},
    {"/missing", "HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone"},
    {"/chunked", kStatus + std::string("Transfer-Encoding: chunked\r\n\r\n3\r\nhel\r\n2\r\nlo\r\n0\r\n\r\n")},
    {"/cut", kStatus + std::string("Content-Length: 9\r\n\r\nhello")},
    {"/no-http", "SSH-2.0-Printer\r\n"},
    {"/same", redirectTo("http://127.0.0.1:$PORT/echo")},
    {"/other-host", redirectTo("http://localhost:$PORT/echo")},
    {"/loop", redirectTo("/loop")},
    {"/file", redirectTo("file:///etc/passwd")},
    {"/echo", kStatus + std::string("\r\n$AUTHORIZATION")},
    {"/silent", "", Then::silence},
    {"/header-only", kStatus + std::string("Content-Length: 9\r\n\r\n"), Then::silence},
    {"/drips-header", "HTTP/1.1 200 OK\r\nX: " + std::string(1000, 'x'), Then::close, 50},
    {"/late-header", // 1.5 s, of which the interim answer takes none
        "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n", Then::silence, 40},
    {"/silent-redirect", redirectTo("http://127.0.0.1:$PORT/silent")},
    {"/charset", "HTTP/1.1 200 OK\r\nContent-Type: text/xml; Charset=\"iso-8859-2\"; x=y\r\n\r\nx"},
    {"/falls-silent", kStatus + std::string("Content-Length: 9\r\n\r\nhello"), Then::silence},
    {"/slow", kStatus + std::string("Content-Length: 4\r\n\r\nslow"), Then::close, 700},
    {"/drip", kStatus + std::string("Content-Length: 5000\r\n\r\n") + std::string(5000, '.'), Then::close,
        100},
    {"/endless", kStatus + std::string("\r\n"), Then::flood},
    {"/endless-header", kStatus + std::string("X: "), Then::flood},
};

struct Expected {
    std::string url;
    std::string bytes;
    long status;
    std::string problem; // a part of it; empty: there is none
};

void expectAnswer(const FetchResult& result, const Expected& expected) {
    SCOPED_TRACE(expected.url);
    EXPECT_EQ(result.bytes, expected.bytes);
    EXPECT_EQ(result.status, expected.status);
    EXPECT_EQ(result.problem.empty(), expected.problem.empty()) << result.problem;
    EXPECT_NE(result.problem.find(expected.problem), std::string::npos) << result.problem;
}

TEST(URLFetch, AnswersWhatHasComeAndWhatWentWrong) {
    const ScriptedServer server(kAnswers);
    int closedPort = 0;
    listenOnLoopback(1, &closedPort).reset();
    const std::string closed = "127.0.0.1:" + std::to_string(closedPort);
    const std::string noName(64, 'x'); // a label too long to ask anybody for it, RFC 1035 section 2.3.4
    const Expected cases[] = {
        {server.url("/whole"), "hello", 200, ""},
        {server.url("/empty"), "", 200, ""},
        {server.url("/missing"), "gone", 404, ""},
        {server.url("/chunked"), "hello", 200, ""},
        {server.url("/cut"), "hello", 200, " closed the connection before its answer was complete"},
        {server.url("/nothing"), "", 0, " closed the connection without an answer"},
        {server.url("/no-http"), "", 0, " answers in another protocol than HTTP"},
        {server.url("/loop"), "", 302, " redirects again and again"},
        {server.url("/file"), "", 302, " or redirects to one"},
        {server.url("/endless-header"), "", 0, ""},
        {"http://user:secret@" + closed + "/", "", 0, "cannot connect to " + closed + ": Connection refused"},
        {"http://" + noName + "/", "", 0, "the name of " + noName + ":80 cannot be resolved"},
        {"file:///etc/passwd", "", 0, "not the URL of a web server"},
        {"printer.example/status", "", 0, "not the URL of a web server"},
        {std::string("http://127.0.0.1/\0x", 19), "", 0, "not the URL of a web server"},
    };
    for (const Expected& expected : cases) {
        const FetchResult result = fetchDocument({.url = expected.url});
        if (expected.url.ends_with("/endless-header"))
            EXPECT_FALSE(result.problem.empty());
        else
            expectAnswer(result, expected);
        EXPECT_EQ(result.problem.find("secret"), std::string::npos);
    }
    EXPECT_EQ(fetchDocument({.url = server.url("/charset")}).charset, "iso-8859-2");
    EXPECT_EQ(fetchDocument({.url = server.url("/whole")}).charset, "");
    EXPECT_FALSE(fetchDocument({}).problem.empty());
    EXPECT_EQ(GetURLWithAuthentication_CFNetwork(std::nullopt, "user", "secret"), "");
    EXPECT_EQ(GetURLWithAuthentication_SSL(std::nullopt, "user", "secret"), "");
    EXPECT_EQ(MyXMLTreeCreateWithDataFromURL(server.url("/whole")), "hello");
}

TEST(URLFetch, WaitsTwoSecondsForSomethingToCome) {
    const ScriptedServer server(kAnswers);
    const FullServer full;
    const Expected cases[] = {
        {"http://127.0.0.1:" + std::to_string(full.port()) + "/", "", 0, "no answer from 127.0.0.1:"},
        {server.url("/silent"), "", 0, " within 2 seconds"},
        {server.url("/header-only"), "", 200, " fell silent for 2 seconds"},
        {server.url("/late-header"), "", 200, " fell silent for 2 seconds"},
        {server.url("/drips-header"), "", 200, "no whole header of the answer from 127.0.0.1:"},
        {server.url("/silent-redirect"), "", 302, "no answer from 127.0.0.1:"},
        {server.url("/falls-silent"), "hello", 200, " fell silent for 2 seconds"},
        {server.url("/slow"), "slow", 200, ""}, // in more than two seconds, none of them without a byte
    };
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::future<FetchResult>> fetches;
    for (const Expected& expected : cases)
        fetches.push_back(
            std::async(std::launch::async, [&expected] { return fetchDocument({.url = expected.url}); }));
    for (std::size_t i = 0; i < fetches.size(); ++i)
        expectAnswer(fetches[i].get(), cases[i]);
    EXPECT_GT(std::chrono::steady_clock::now() - start, 3400ms); // the header begins two seconds anew
}

TEST(URLFetch, EndsAtTheLimits) {
    const ScriptedServer server(kAnswers);
    fetchDocument({.url = server.url("/loop")});
    EXPECT_EQ(server.requestCount(), 11); // the first and ten redirects

    const FetchResult large = fetchDocument({.url = server.url("/endless"), .maximumSize = 1000000});
    EXPECT_EQ(large.bytes.size(), 1000000U);
    EXPECT_NE(large.problem.find(" is larger than 1000000 bytes"), std::string::npos) << large.problem;
    EXPECT_EQ(fetchDocument({.url = server.url("/whole"), .maximumSize = 5}).problem, "");

    const FetchResult slow = fetchDocument({.url = server.url("/drip"), .maximumTime = 500ms});
    EXPECT_LT(slow.bytes.size(), 5000U);
    EXPECT_NE(slow.problem.find(" was not complete within 0.5 seconds"), std::string::npos) << slow.problem;
}

TEST(URLFetch, SendsCredentialsAtOnceAndToTheirServerAlone) {
    const ScriptedServer server(kAnswers);
    const ScriptedServer redirecting({{"/other-port", redirectTo(server.url("/echo"))}});
    const struct {
        std::string url;
        std::optional<std::string> user, password;
        const char* sent; // base64 of "user:password"
    } cases[] = {
        {server.url("/echo"), "user", "secret", "Basic dXNlcjpzZWNyZXQ="},
        {server.url("/echo"), "user", std::nullopt, "Basic dXNlcjo="},
        {server.url("/echo"), std::nullopt, "secret", "Basic OnNlY3JldA=="},
        {server.url("/echo"), std::nullopt, std::nullopt, "none"},
        {server.url("/same"), "user", "secret", "Basic dXNlcjpzZWNyZXQ="},
        {server.url("/other-host"), "user", "secret", "none"},
        {redirecting.url("/other-port"), "user", "secret", "none"},
    };
    for (const auto& [url, user, password, sent] : cases)
        EXPECT_EQ(GetURLWithAuthentication(url, user, password), sent) << url;
}

TEST(URLFetch, LeavesTheEnvironmentsProxiesAndPasswordsAlone) {
    const ScriptedServer server(kAnswers);
    const TempFolder home;
    home.write(".netrc", "machine 127.0.0.1 login user password secret\n");
    const Environment environment{{"http_proxy", "http://127.0.0.1:1"}, {"ALL_PROXY", "http://127.0.0.1:1"},
        {"no_proxy", std::nullopt}, {"HOME", home.path().string()}};
    EXPECT_EQ(
        inChild(environment, [&] { return fetchDocument({.url = server.url("/echo")}).bytes; }), "none");
}

TEST(URLFetch, RetriesForTheCodesOfTLSAlone) {
    for (const int code : {-9848, -9830, -9807, -9801})
        EXPECT_TRUE(isTLSErrorCode(code)) << code;
    for (const int code : {-9849, -9800, 0, 9807, 111})
        EXPECT_FALSE(isTLSErrorCode(code)) << code;
}

TEST(URLFetch, MeasuresIdleTimeInTicks) {
    constexpr std::uint32_t kLast = std::numeric_limits<std::uint32_t>::max();
    const struct {
        std::uint32_t start, now;
        bool passed;
    } cases[] = {
        {1000, 1120, false},
        {1000, 1121, true},
        {kLast - 50, 120, false},
        {kLast - 50, 121, true},
    };
    for (const auto& [start, now, passed] : cases)
        EXPECT_EQ(IdleTimer(start).hasPassed(now), passed) << start << ' ' << now;
}

TEST(HTTPStream, LeavesWithTheServerWhatIsNotRead) {
    const ScriptedServer server(kAnswers);
    const auto stream = platform::HTTPStream::create({server.url("/endless"), std::nullopt, std::nullopt});
    ASSERT_NE(stream, nullptr);
    std::string bytes;
    EXPECT_TRUE(stream->open());
    while (stream->status() == platform::HTTPStreamStatus::opening)
        stream->proceed(50ms);
    EXPECT_EQ(stream->status(), platform::HTTPStreamStatus::open);
    EXPECT_EQ(stream->read(bytes, 10), platform::HTTPRead::bytes);
    EXPECT_EQ(bytes, "xxxxxxxxxx");
    for (int i = 0; i < 10; ++i) {
        stream->proceed(20ms);
        std::this_thread::sleep_for(20ms);
    }
    EXPECT_LT(server.sentByFlood(), std::size_t{32} << 20U); // what the system buffers, not what one can send
}

} // namespace
} // namespace orvan
