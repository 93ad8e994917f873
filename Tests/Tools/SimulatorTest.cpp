#include "Platform/Base64.h"
#include "Platform/XMLDocument.h"
#include "Tests/Support/SimulatedPrinter.h"

#include <cups/cups.h>
#include <gtest/gtest.h>
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <array>
#include <chrono>
#include <memory>

namespace orvan {
namespace {

constexpr double kPatienceInSeconds = 0.4;

constexpr int kLongestPart = 32;

struct URL {
    explicit URL(const std::string& text) {
        std::array<char, kLongestPart> user{};
        httpSeparateURI(HTTP_URI_CODING_ALL, text.c_str(), scheme.data(), kLongestPart, user.data(),
            kLongestPart, host.data(), kLongestPart, &port, path.data(), kLongestPart);
    }
    std::array<char, kLongestPart> scheme{}, host{}, path{};
    int port = 0;
};

using Connection = std::unique_ptr<http_t, decltype(&httpClose)>;

Connection connectTo(const URL& url) {
    const bool tls = std::string("https") == url.scheme.data();
    return {httpConnect2(url.host.data(), url.port, nullptr, AF_INET,
                tls ? HTTP_ENCRYPTION_ALWAYS : HTTP_ENCRYPTION_IF_REQUESTED, 1, 2000, nullptr),
        httpClose};
}

struct Answer {
    int status = HTTP_STATUS_ERROR;
    std::string type, location, challenge, body;
    off_t promised = 0;
    bool timedOut = false;
};

// GET with a client that waits a moment for each piece and follows nothing.
Answer get(const std::string& text, const std::string& credentials = "") {
    const URL url(text);
    const Connection http = connectTo(url);
    Answer answer;
    if (!http) return answer;
    const auto giveUp = [](http_t*, void* flag) { return (*static_cast<bool*>(flag) = true) ? 0 : 1; };
    httpSetTimeout(http.get(), kPatienceInSeconds, giveUp, &answer.timedOut);
    std::string encoded = "Basic ";
    platform::appendBase64(
        encoded, std::span(reinterpret_cast<const std::uint8_t*>(credentials.data()), credentials.size()));
    if (!credentials.empty()) httpSetField(http.get(), HTTP_FIELD_AUTHORIZATION, encoded.c_str());
    httpGet(http.get(), url.path.data());
    http_status_t status = HTTP_STATUS_CONTINUE;
    while (status == HTTP_STATUS_CONTINUE)
        status = httpUpdate(http.get());
    answer.status = status;
    if (status == HTTP_STATUS_ERROR) return answer;
    answer.type = httpGetField(http.get(), HTTP_FIELD_CONTENT_TYPE);
    answer.location = httpGetField(http.get(), HTTP_FIELD_LOCATION);
    answer.challenge = httpGetField(http.get(), HTTP_FIELD_WWW_AUTHENTICATE);
    answer.promised = httpGetLength2(http.get());
    std::array<char, 1000> buffer{};
    for (ssize_t size = 0; (size = httpRead2(http.get(), buffer.data(), buffer.size())) > 0;)
        answer.body.append(buffer.data(), static_cast<std::size_t>(size));
    return answer;
}

std::string sibling(const std::string& url, const std::string& path) {
    return url.substr(0, url.find('/', sizeof("https://"))) + path;
}

TEST(SimulatorTest, HasTheBuiltInDocumentAndNothingElse) {
    const SimulatedPrinter printer;
    const Answer answer = get(printer.url());
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.type, "application/xml");
    const auto document = platform::XMLDocument::parse(answer.body);
    ASSERT_TRUE(document);
    const struct {
        std::vector<const char*> path;
        std::size_t children;
    } lists[] = {
        {{"deviceStatus", "printer", "inputTrays"}, 4},
        {{"deviceStatus", "printer", "supplies"}, 4},
        {{"customPaperTypes", "printer"}, 5},
        {{"storedJobs", "printer", "personalJobs"}, 2},
        {{"storedJobs", "printer", "sharedJobs"}, 1},
        {{"MULTIRSP"}, 3},
        {{"permissions"}, 2},
    };
    for (const auto& [path, children] : lists) {
        const platform::XMLNode* node = document->rootElement();
        for (const char* name : path)
            node = node ? node->childNamed(name) : nullptr;
        EXPECT_TRUE(node && node->childCount() == children) << path.back();
    }
    EXPECT_EQ(get(sibling(printer.url(), "/")).status, 404);
    EXPECT_EQ(get(sibling(printer.url(), "/status.xml/x")).status, 404);
}

TEST(SimulatorTest, ReadsItsDocumentAnewForEveryRequest) {
    const SimulatedPrinter printer({"--no-snmp"}, "<first/>");
    EXPECT_EQ(get(printer.url()).body, "<first/>");
    printer.replaceDocument("<second/>");
    EXPECT_EQ(get(printer.url()).body, "<second/>");
    EXPECT_EQ(printer.log(), "");
    printer.replaceDocument(std::nullopt);
    EXPECT_EQ(get(printer.url()).status, 500);
    EXPECT_NE(printer.log().find("status.xml: No such file"), std::string::npos);
}

TEST(SimulatorTest, AsksForCredentialsAndLogsWithoutThem) {
    for (const std::string protocol : {"http", "https"}) {
        std::vector<std::string> arguments = {"--log", "--user", "Jörg"};
        if (protocol == "https") arguments.emplace_back("--tls");
        const SimulatedPrinter printer(arguments, "<status/>", {{"ORVAN_PASSWORD", "geheim:1"}});
        EXPECT_TRUE(printer.url().starts_with(protocol + "://127.0.0.1:")) << printer.url();
        const Answer refusal = get(printer.url());
        EXPECT_EQ(refusal.status, 401);
        EXPECT_EQ(refusal.challenge.substr(0, 12), "Basic realm=");
        EXPECT_EQ(get(printer.url(), "Jörg:geheim").status, 401);
        EXPECT_EQ(get(printer.url(), "Jörg:geheim:1").body, "<status/>");
        EXPECT_EQ(printer.log(), "orvan-simulator: GET /status.xml 401 no credentials\n"
                                 "orvan-simulator: GET /status.xml 401 credentials\n"
                                 "orvan-simulator: GET /status.xml 200 credentials\n");
    }
}

TEST(SimulatorTest, MisbehavesAsItIsTold) {
    const std::string document = "<status>Grün</status>";
    const std::string half = document.substr(0, document.size() / 2);
    const auto whole = static_cast<off_t>(document.size());
    const struct {
        const char* kind;
        std::string body;
        off_t promised;
        const char* movedTo;
        int status;
        bool timesOut;
    } cases[] = {
        {"slow", document, whole, nullptr, 200, false},
        {"silent", "", 0, nullptr, HTTP_STATUS_ERROR, true},
        {"cut", half, whole, nullptr, 200, false},
        {"stall", half, whole, nullptr, 200, true},
        {"malformed", half, static_cast<off_t>(half.size()), nullptr, 200, false},
        {"redirect", "", 0, "127.0.0.1", 302, false},
        {"redirect-away", "", 0, "localhost", 302, false},
    };
    for (const auto& [kind, body, promised, movedTo, status, timesOut] : cases) {
        SCOPED_TRACE(kind);
        const SimulatedPrinter printer(
            {"--no-snmp", "--log", "--interval", "10", "--misbehave", kind}, document);
        const auto before = std::chrono::steady_clock::now();
        const Answer answer = get(printer.url());
        const auto time = std::chrono::steady_clock::now() - before;
        EXPECT_EQ(answer.status, status);
        EXPECT_EQ(answer.body, body);
        EXPECT_EQ(answer.promised, promised);
        EXPECT_EQ(answer.timedOut, timesOut);
        EXPECT_NE(printer.log().find("GET /status.xml "), std::string::npos);
        const std::size_t pauses = kind == std::string("slow") ? document.size() - 1 : 0;
        EXPECT_GE(time, std::chrono::milliseconds(10) * pauses);
        if (!movedTo) continue;
        EXPECT_STREQ(URL(answer.location).host.data(), movedTo);
        EXPECT_EQ(get(answer.location).body, document);
    }
    const Answer wrong = get(SimulatedPrinter({"--misbehave", "wrong"}).url());
    EXPECT_EQ(wrong.type, "text/html");
    EXPECT_TRUE(platform::XMLDocument::parse(wrong.body));
}

// The answer to one question: "integer N", "error N", "none" for an exception of SNMPv2, "silence".
std::string ask(const std::string& agent, long version, std::string community, std::vector<oid> name) {
    netsnmp_session wanted{};
    snmp_sess_init(&wanted);
    wanted.version = version;
    wanted.retries = 0;
    wanted.timeout = 300'000; // microseconds
    wanted.community = reinterpret_cast<u_char*>(community.data());
    wanted.community_len = community.size();
    std::string peer = "udp:" + agent;
    wanted.peername = peer.data();
    const std::unique_ptr<void, decltype(&snmp_sess_close)> session(snmp_sess_open(&wanted), snmp_sess_close);
    netsnmp_pdu* question = snmp_pdu_create(SNMP_MSG_GET);
    snmp_add_null_var(question, name.data(), name.size());
    netsnmp_pdu* response = nullptr;
    if (snmp_sess_synch_response(session.get(), question, &response) != STAT_SUCCESS) return "silence";
    const std::unique_ptr<netsnmp_pdu, decltype(&snmp_free_pdu)> keep(response, snmp_free_pdu);
    if (response->errstat != SNMP_ERR_NOERROR) return "error " + std::to_string(response->errstat);
    const netsnmp_variable_list* variable = response->variables;
    if (variable->type == ASN_INTEGER) return "integer " + std::to_string(*variable->val.integer);
    return variable->type == SNMP_NOSUCHOBJECT || variable->type == SNMP_NOSUCHINSTANCE ? "none" : "?";
}

TEST(SimulatorTest, AnswersSNMP) {
    const std::vector<oid> object = {1, 3, 6, 1, 4, 1, 97531, 8, 83, 1, 1, 2, 1, 7, 1};
    std::vector<oid> instance = object;
    instance.push_back(0);
    const std::vector<oid> description = {1, 3, 6, 1, 2, 1, 1, 1, 0};
    const SimulatedPrinter usual;
    const SimulatedPrinter other({"--community", "of \"fice", "--job-accounting", "-2147483648"});
    EXPECT_EQ(ask(usual.snmpAgent(), SNMP_VERSION_1, "public", object), "integer 1");
    EXPECT_EQ(ask(usual.snmpAgent(), SNMP_VERSION_2c, "public", object), "integer 1");
    EXPECT_EQ(ask(usual.snmpAgent(), SNMP_VERSION_1, "public", instance), "error 2");
    EXPECT_EQ(ask(usual.snmpAgent(), SNMP_VERSION_2c, "public", instance), "none");
    EXPECT_EQ(ask(usual.snmpAgent(), SNMP_VERSION_2c, "public", description), "none");
    EXPECT_EQ(ask(other.snmpAgent(), SNMP_VERSION_2c, "of \"fice", object), "integer -2147483648");
    EXPECT_EQ(ask(other.snmpAgent(), SNMP_VERSION_2c, "public", object), "silence");
    EXPECT_EQ(usual.log(), "");
}

TEST(SimulatorTest, EndsWithItsClientsWaiting) {
    for (const auto& [kind, signal] : {std::pair("silent", SIGTERM), std::pair("stall", SIGINT)}) {
        SimulatedPrinter printer({"--misbehave", kind, "--log"});
        const Connection waiting = connectTo(URL(printer.url()));
        const Connection asking = connectTo(URL(printer.url()));
        httpGet(asking.get(), "/status.xml");
        while (printer.log().empty())
            usleep(1000);
        const auto before = std::chrono::steady_clock::now();
        EXPECT_EQ(printer.end(signal), 0) << kind;
        EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2)) << kind;
    }
}

TEST(SimulatorTest, RunsACommandAndAnswersForIt) {
    const SimulatedPrinter printer;
    const std::string port = std::to_string(URL(printer.url()).port);
    const std::string snmpPort = printer.snmpAgent().substr(printer.snmpAgent().find(':') + 1);
    const std::string show = "echo $ORVAN_SIMULATOR_URL ${ORVAN_SIMULATOR_SNMP-none}; exit 7";
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        const char* says;
    } cases[] = {
        {{"--", "sh", "-c", show}, 7, "/status.xml 127.0.0.1:"},
        {{"--no-snmp", "--", "sh", "-c", show}, 7, "/status.xml none"},
        {{"--", "sh", "-c", "kill -PIPE $$"}, 128 + SIGPIPE, ""},
        {{"--", "/nonexistent"}, 1, "/nonexistent could not be run"},
        {{"--port", port, "--", "true"}, 1, "TCP port"},
        {{"--snmp-port", snmpPort, "--", "true"}, 1, "UDP port"},
        {{"--misbehave", "nicely"}, 2, "nicely"},
        {{"--user", "anna"}, 2, "ORVAN_PASSWORD"},
        {{"--version"}, 0, "orvan-simulator 1"},
        {{"--help"}, 0, "redirect-away"},
    };
    for (const auto& [arguments, exitCode, says] : cases) {
        // Libraries make a test program ignore the signal.
        std::vector<std::string> command = {"/usr/bin/env", "--default-signal=PIPE", ORVAN_SIMULATOR};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const ProgramEnd end = runProgram(command, {{"ORVAN_PASSWORD", std::nullopt}});
        EXPECT_EQ(end.exitCode, exitCode) << arguments.back() << end.errors;
        EXPECT_NE((end.output + end.errors).find(says), std::string::npos) << end.output << end.errors;
    }
}

} // namespace
} // namespace orvan
