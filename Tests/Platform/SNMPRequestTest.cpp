// net-snmp's own agent, asked by the library as the command filter asks printers.
#include "Platform/SNMPRequest.h"
#include "Platform/FileDescriptor.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/TempFolder.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>

namespace orvan {
namespace {

constexpr const char* kAgent = "/usr/sbin/snmpd";

int freePort() {
    const platform::FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(socket.get(), reinterpret_cast<sockaddr*>(&address), size) != 0) return 0;
    getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

class SNMPRequests : public testing::Test {
protected:
    void SetUp() override {
        if (access(kAgent, X_OK) != 0) GTEST_SKIP() << kAgent << " is not installed";
        request_.host = "127.0.0.1";
        request_.port = freePort();
        request_.community = "office";
        request_.patience = std::chrono::milliseconds(300);
        const std::string file =
            folder_.write("snmpd.conf", "agentaddress udp:127.0.0.1:" + std::to_string(request_.port) +
                                            "\nrocommunity office\nsysName caf\u00E9\n"
                                            "override 1.3.6.1.4.1.97531.1 integer -42\n"
                                            "override 1.3.6.1.4.1.97531.2 octet_str 0xff00\n");
        agent_ = std::make_unique<BackgroundProcess>(std::vector<std::string>{kAgent, "-f", "-C", "-c", file,
                                                         "-Lf", "/dev/null", "-p", folder_.path() / "pid"},
            [this] {
                changeEnvironment({{"SNMP_PERSISTENT_DIR", folder_.path().string()}});
            });
        request_.objects = {"1.3.6.1.2.1.1.5.0"};
        platform::Failure problem;
        for (int i = 0; i < 300 && !platform::getSNMPObjects(request_, problem); ++i) {
        }
        ASSERT_EQ(problem.value_or("").find("could not"), std::string::npos) << problem.value_or("");
        request_.patience = std::chrono::minutes(1);
    }

    TempFolder folder_;
    platform::SNMPRequest request_;
    std::unique_ptr<BackgroundProcess> agent_;
};

TEST_F(SNMPRequests, AnswerValuesUnderTheirIdentifiers) {
    platform::Failure problem;
    request_.objects = {
        "1.3.6.1.4.1.97531.1", "1.3.6.1.2.1.1.5.0", "1.3.6.1.4.1.97531.2", "1.3.6.1.2.1.1.2.0"};
    const auto values = platform::getSNMPObjects(request_, problem);
    ASSERT_TRUE(values) << problem.value_or("");
    EXPECT_EQ(values->at("1.3.6.1.4.1.97531.1"), platform::PropertyList(-42));
    EXPECT_EQ(values->at("1.3.6.1.2.1.1.5.0"), platform::PropertyList("caf\u00E9"));
    EXPECT_EQ(
        values->at("1.3.6.1.4.1.97531.2"), platform::PropertyList(platform::PropertyList::Data{0xFF, 0}));
    EXPECT_TRUE(values->at("1.3.6.1.2.1.1.2.0").asString()->starts_with("1.3.6.1.4.1.8072."));
}

TEST_F(SNMPRequests, SayWhyThereIsNoAnswer) {
    const auto problemWith = [&](const std::string& object, const std::string& community, const char* host,
                                 bool isAnswered) {
        platform::SNMPRequest request = request_;
        request.objects = {object};
        request.community = community;
        request.host = host;
        request.retries = 0;
        if (!isAnswered) request.patience = std::chrono::milliseconds(300);
        platform::Failure problem;
        return platform::getSNMPObjects(request, problem) ? "an answer" : problem.value_or("");
    };
    const struct {
        const char* object;
        const char* community;
        const char* host;
        const char* words;
    } cases[] = {
        {"1.3.6.1.4.1.97531.1.0", "office", "127.0.0.1", "answers an error: (noSuchName)"},
        {"1.3.6.1.4.1.97531.1", "public", "127.0.0.1", "does not answer; check that SNMP is on"},
        {"1.3.6.1.4.1.97531.1", "office", "::1", "the SNMP agent at [::1]:"},
        {"1.3.6.1.4.1.97531.1", "office", "no such host", "has no address"},
        {"1.3.x", "office", "127.0.0.1", "which is no identifier"},
        {"", "office", "127.0.0.1", "which is no identifier"},
        {"1.3.6.99999999999999999999", "office", "127.0.0.1", "which is no identifier"},
    };
    for (const auto& [object, community, host, words] : cases) {
        const std::string problem =
            problemWith(object, community, host, std::string_view(words).starts_with("answers"));
        EXPECT_NE(problem.find(words), std::string::npos) << problem;
    }
}

} // namespace
} // namespace orvan
