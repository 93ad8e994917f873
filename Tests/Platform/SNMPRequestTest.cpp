// net-snmp's own agent, asked by the library as the command filter asks printers.
#include "Platform/SNMPRequest.h"
#include "Platform/FileDescriptor.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/TempFolder.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

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
        request_.communities = {"office"};
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
        ASSERT_TRUE(eventually([&] { return platform::getSNMPObjects(request_, problem).has_value(); }))
            << problem.value_or("");
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

// An agent drops what comes in a community that it does not know.
TEST_F(SNMPRequests, AskInAllCommunitiesAtOnce) {
    platform::Failure problem;
    request_.communities = {"public", "office", "private"};
    EXPECT_TRUE(platform::getSNMPObjects(request_, problem)) << problem.value_or("");
    bool isSilent = false;
    request_.communities = {"public", "private"};
    request_.patience = std::chrono::milliseconds(100);
    EXPECT_FALSE(platform::getSNMPObjects(request_, problem, &isSilent));
    EXPECT_TRUE(isSilent);
}

TEST_F(SNMPRequests, SayWhyThereIsNoAnswer) {
    const auto problemWith = [&](const std::string& object, const std::string& community, const char* host,
                                 bool isAnswered) {
        platform::SNMPRequest request = request_;
        request.objects = {object};
        request.communities = {community};
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

// Its length is below 128.
std::string ber(char type, const std::string& content) {
    return std::string(1, type) + static_cast<char>(content.size()) + content;
}

// Answers 42 to every question of 1.3.6.1.2.1.1.5.0, from its own port or from another one.
class ScriptedAgent {
public:
    explicit ScriptedAgent(bool isStranger, int lost = 0)
        : isStranger_(isStranger), lost_(lost), socket_(::socket(AF_INET, SOCK_DGRAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (bind(socket_.get(), reinterpret_cast<sockaddr*>(&address), size) != 0) std::perror("bind");
        getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { serve(); });
    }
    ScriptedAgent(const ScriptedAgent&) = delete;
    ScriptedAgent& operator=(const ScriptedAgent&) = delete;
    ~ScriptedAgent() {
        isOver_ = true;
        thread_.join();
    }

    int port() const { return port_; }
    std::vector<std::string> identifiers() const { return identifiers_; } // of the requests; when nobody asks

private:
    void serve() {
        while (!isOver_) {
            pollfd waiting{socket_.get(), POLLIN, 0};
            if (poll(&waiting, 1, 10) <= 0) continue;
            std::array<char, 512> bytes{};
            sockaddr_in from{};
            socklen_t size = sizeof from;
            auto* const sender = reinterpret_cast<sockaddr*>(&from);
            const ssize_t length = recvfrom(socket_.get(), bytes.data(), bytes.size(), 0, sender, &size);
            if (lost_-- > 0) continue;
            // Behind the community there is the PDU, which begins with the identifier.
            const std::string question(bytes.data(), static_cast<std::size_t>(length));
            const std::size_t pdu = question.find('\xA0');
            const std::string identifier =
                question.substr(pdu + 2, static_cast<std::size_t>(question[pdu + 3]) + 2);
            identifiers_.push_back(identifier);
            const std::string object = ber(0x30, std::string("\6\10\x2B\6\1\2\1\1\5\0\2\1\x2A", 13));
            const std::string none = ber(2, std::string(1, 0));
            std::string content = identifier;
            content.append(none).append(none).append(ber(0x30, object));
            std::string message = none;
            message.append(ber(4, "public")).append(ber('\xA2', content));
            const std::string answer = ber(0x30, message);
            sendto(
                isStranger_ ? stranger_.get() : socket_.get(), answer.data(), answer.size(), 0, sender, size);
        }
    }

    bool isStranger_;
    int lost_; // so many questions get lost
    platform::FileDescriptor socket_;
    platform::FileDescriptor stranger_{::socket(AF_INET, SOCK_DGRAM, 0)};
    int port_ = 0;
    std::vector<std::string> identifiers_;
    std::atomic<bool> isOver_ = false;
    std::thread thread_;
};

TEST(SNMPAnswers, CountFromTheAgentAlone) {
    platform::SNMPRequest request{.host = "127.0.0.1", .objects = {"1.3.6.1.2.1.1.5.0"}};
    platform::Failure problem;
    const ScriptedAgent agent(false);
    request.port = agent.port();
    request.patience = std::chrono::minutes(1);
    for (int i = 0; i < 8; ++i)
        ASSERT_EQ(platform::getSNMPObjects(request, problem).value_or(platform::PropertyList::Dictionary()),
            (platform::PropertyList::Dictionary{{"1.3.6.1.2.1.1.5.0", 42}}))
            << problem.value_or("");
    // Nobody can tell the next one from the last: their last bytes do not count up.
    int steps = 0;
    const std::vector<std::string> seen = agent.identifiers();
    for (std::size_t i = 1; i < seen.size(); ++i)
        steps += static_cast<unsigned char>(seen[i].back() - seen[i - 1].back()) == 1 ? 1 : 0;
    EXPECT_EQ(std::set(seen.begin(), seen.end()).size(), 8U);
    EXPECT_LT(steps, 5);

    const ScriptedAgent forgetful(false, 1);
    request.port = forgetful.port();
    request.patience = std::chrono::milliseconds(300);
    request.retries = 100;
    EXPECT_TRUE(platform::getSNMPObjects(request, problem)) << problem.value_or("");

    request.retries = 0;
    const ScriptedAgent spoofed(true);
    request.port = spoofed.port();
    EXPECT_FALSE(platform::getSNMPObjects(request, problem));
    EXPECT_NE(problem->find("does not answer"), std::string::npos) << *problem;
    EXPECT_FALSE(spoofed.identifiers().empty());
}

} // namespace
} // namespace orvan
