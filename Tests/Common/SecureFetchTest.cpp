// Fetches from a real web server with passwords and certificates that it has made for itself.
#include "Common/Utilities/URLFetch.h"
#include "Platform/HTTPStream.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/ScriptedServer.h"
#include "Tests/Support/WebServer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace orvan {
namespace {

constexpr const char* kDocument = "<status>ready</status>\n";

class SecureFetch : public testing::Test {
protected:
    void SetUp() override {
        if (!WebServer::isInstalled()) GTEST_SKIP() << "nginx is not installed";
        server_ = std::make_unique<WebServer>(kDocument);
    }

    std::unique_ptr<WebServer> server_;
};

// What the stream's first read that does not have to wait fails with.
platform::HTTPStreamError errorOf(const std::string& url, const platform::TLSSettings& tls) {
    const auto stream = platform::HTTPStream::create({url, {}, {}}, tls);
    std::string bytes;
    if (stream == nullptr || !stream->open()) return {};
    for (int i = 0; i < 200 && stream->read(bytes, 1) == platform::HTTPRead::nothingYet; ++i) {
    }
    EXPECT_EQ(stream->status(), platform::HTTPStreamStatus::error);
    return stream->error();
}

TEST_F(SecureFetch, TellsTheFailuresOfTLSApart) {
    const ScriptedServer plain({});
    const std::string noTLS = "https" + plain.url("/").substr(4);
    const struct {
        std::string url;
        platform::TLSSettings tls;
        int code;
        const char* problem;
    } cases[] = {
        {server_->modern(), {}, -9807, "no trust in the certificate of 127.0.0.1:"},
        {server_->modern(), {false, true}, -9843, "no trust in the certificate of 127.0.0.1:"},
        {server_->old("/"), {}, -9808, "no trust in the certificate of 127.0.0.1:"},
        {noTLS, {false, false}, -9824, "no encrypted connection to 127.0.0.1:"},
    };
    for (const auto& [url, tls, code, problem] : cases) {
        const platform::HTTPStreamError error = errorOf(url, tls);
        EXPECT_EQ(error.code, code) << error.problem;
        EXPECT_EQ(error.domain, platform::HTTPStreamErrorDomain::tls);
        EXPECT_TRUE(error.problem.starts_with(problem)) << error.problem;
    }
}

TEST_F(SecureFetch, FetchesAgainWithoutChecks) {
    EXPECT_EQ(GetURLWithAuthentication(server_->modern(), "user", "secret"), kDocument);
    EXPECT_EQ(GetURLWithAuthentication(server_->old("/status.xml"), std::nullopt, std::nullopt), kDocument);
    EXPECT_EQ(
        GetURLWithAuthentication_SSL("http" + server_->modern().substr(5), "user", "secret"), kDocument);
    EXPECT_EQ(GetURLWithAuthentication_SSL(server_->modern(), "user", "secret"), kDocument);
    EXPECT_EQ(fetchDocument({.url = server_->old("/moved")}).status, 302); // redirects are not followed then
}

// What the second fetch says when it is no better, and that the first one's bytes are gone.
TEST_F(SecureFetch, WritesTheErrorOfTheSecondFetch) {
    const ScriptedServer redirecting(
        {{"/", "HTTP/1.1 302 Found\r\nLocation: " + server_->modern() + "\r\nContent-Length: 3\r\n\r\nold"}});
    testing::internal::CaptureStdout();
    EXPECT_EQ(GetURLWithAuthentication(redirecting.url("/"), "user", "secret"), "");
    EXPECT_EQ(
        testing::internal::GetCapturedStdout(), "\n bytesRead is < 0 cfErr.Error = -9824  \n domain = 3 \n");
    testing::internal::CaptureStdout();
    const FetchResult result =
        fetchDocument({.url = redirecting.url("/"), .user = "user", .password = "secret"});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_NE(result.problem.find("no encrypted connection"), std::string::npos) << result.problem;
    EXPECT_NE(result.problem.find("no trust in the certificate of " + server_->modern().substr(8, 9)),
        std::string::npos)
        << result.problem;
}

// Releases before 10.5 read only what has come already.
TEST_F(SecureFetch, ReadsAsOlderReleasesDid) {
    const Environment older{{"ORVAN_PACKED_VERSION", "0x1040"}};
    EXPECT_EQ(inChild(older, [&] { return GetURLWithAuthentication(server_->modern(), "user", "secret"); }),
        kDocument);
}

} // namespace
} // namespace orvan
