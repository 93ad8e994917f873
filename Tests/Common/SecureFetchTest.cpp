// Fetches from a real web server with passwords and certificates that it has made for itself.
#include "Common/Utilities/URLFetch.h"
#include "Platform/FileDescriptor.h"
#include "Platform/HTTPStream.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/ScriptedServer.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace orvan {
namespace {

constexpr const char* kNginx = "/usr/sbin/nginx";
constexpr const char* kDocument = "<status>ready</status>\n";
constexpr const char* kConfiguration = R"(
daemon off; master_process off; pid nginx.pid; error_log error.log;
events {}
http {
    access_log off;
    client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi; uwsgi_temp_path uwsgi;
    scgi_temp_path scgi;
    server {
        listen 127.0.0.1:$MODERN ssl;
        ssl_certificate modern.pem; ssl_certificate_key modern.key;
        location / { root documents; auth_basic "printer"; auth_basic_user_file users; }
    }
    server {
        listen 127.0.0.1:$OLD ssl; ssl_protocols TLSv1; ssl_ciphers ALL:@SECLEVEL=0;
        ssl_certificate old.pem; ssl_certificate_key old.key;
        location / { root documents; }
        location /moved { return 302 /status.xml; }
    }
})";

void replace(std::string& text, const std::string& from, int port) {
    text.replace(text.find(from), from.size(), std::to_string(port));
}

class SecureFetch : public testing::Test {
protected:
    void SetUp() override {
        if (access(kNginx, X_OK) != 0) GTEST_SKIP() << kNginx << " is not installed";
        // Both are taken before either is given back, so they differ.
        auto first = listenOnLoopback(1, &modernPort_);
        listenOnLoopback(1, &oldPort_);
        first.reset();
        std::string configuration = kConfiguration;
        replace(configuration, "$MODERN", modernPort_);
        replace(configuration, "$OLD", oldPort_);
        folder_.write("nginx.conf", configuration);
        folder_.write("users", "user:{PLAIN}secret\n");
        folder_.write("documents/status.xml", kDocument);
        certify("modern", "rsa:2048");
        certify("old", "rsa:1024");
        start();
    }
    void TearDown() override {
        if (process_ > 0 && kill(process_, SIGTERM) == 0) waitpid(process_, nullptr, 0);
    }

    std::string modern() const { return "https://127.0.0.1:" + std::to_string(modernPort_) + "/status.xml"; }
    std::string old(const std::string& path) const {
        return "https://127.0.0.1:" + std::to_string(oldPort_) + path;
    }

private:
    void certify(const std::string& name, const std::string& key) {
        const std::string file = folder_.path() / name;
        const ProgramEnd end = runProgram({"/usr/bin/openssl", "req", "-x509", "-newkey", key, "-nodes",
            "-subj", "/CN=printer.example", "-days", "2", "-keyout", file + ".key", "-out", file + ".pem"});
        ASSERT_EQ(end.exitCode, 0) << end.errors;
    }
    void start() {
        const std::string prefix = folder_.path();
        const std::string configuration = prefix + "/nginx.conf";
        const std::string errors = prefix + "/error.log";
        process_ = fork();
        if (process_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            execl(kNginx, kNginx, "-p", prefix.c_str(), "-c", configuration.c_str(), "-e", errors.c_str(),
                nullptr);
            _exit(127);
        }
        const platform::TLSSettings unchecked{false, false};
        for (int i = 0; i < 200; ++i) {
            const auto stream = platform::HTTPStream::create({old("/status.xml"), {}, {}}, unchecked);
            std::string bytes;
            auto end = stream->open() ? platform::HTTPRead::nothingYet : platform::HTTPRead::failed;
            while (end == platform::HTTPRead::nothingYet)
                end = stream->read(bytes, 10);
            if (end == platform::HTTPRead::bytes) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
        }
        FAIL() << "nginx does not answer";
    }

    TempFolder folder_;
    int modernPort_ = 0;
    int oldPort_ = 0;
    pid_t process_ = -1;
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
        {modern(), {}, -9807, "no trust in the certificate of 127.0.0.1:"},
        {modern(), {false, true}, -9843, "no trust in the certificate of 127.0.0.1:"},
        {old("/"), {}, -9808, "no trust in the certificate of 127.0.0.1:"},
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
    EXPECT_EQ(GetURLWithAuthentication(modern(), "user", "secret"), kDocument);
    EXPECT_EQ(GetURLWithAuthentication(old("/status.xml"), std::nullopt, std::nullopt), kDocument);
    EXPECT_EQ(GetURLWithAuthentication_SSL("http" + modern().substr(5), "user", "secret"), kDocument);
    EXPECT_EQ(GetURLWithAuthentication_SSL(modern(), "user", "secret"), kDocument);
    EXPECT_EQ(fetchDocument({.url = old("/moved")}).status, 302); // redirects are not followed then

    const FetchResult wrong = fetchDocument({.url = modern(), .user = "user", .password = "wrong"});
    EXPECT_EQ(wrong.status, 401);
    EXPECT_NE(wrong.bytes.find("401 Authorization Required"), std::string::npos) << wrong.bytes;
    EXPECT_EQ(wrong.problem, "");
}

// What the second fetch says when it is no better, and that the first one's bytes are gone.
TEST_F(SecureFetch, WritesTheErrorOfTheSecondFetch) {
    const ScriptedServer redirecting(
        {{"/", "HTTP/1.1 302 Found\r\nLocation: " + modern() + "\r\nContent-Length: 3\r\n\r\nold"}});
    testing::internal::CaptureStdout();
    EXPECT_EQ(GetURLWithAuthentication(redirecting.url("/"), "user", "secret"), "");
    EXPECT_EQ(
        testing::internal::GetCapturedStdout(), "\n bytesRead is < 0 cfErr.Error = -9824  \n domain = 3 \n");
    testing::internal::CaptureStdout();
    const FetchResult result =
        fetchDocument({.url = redirecting.url("/"), .user = "user", .password = "secret"});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_NE(result.problem.find("no encrypted connection"), std::string::npos) << result.problem;
}

} // namespace
} // namespace orvan
