#include "Common/Utilities/URLFetch.h"
#include "Platform/HTTPStream.h"
#include "Platform/SNMPRequest.h"
#include "Tests/Support/SimulatedPrinter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <tuple>

namespace orvan {
namespace {

std::string portOf(const std::string& text) {
    const std::size_t colon = text.rfind(':') + 1;
    return text.substr(colon, text.find('/', colon) - colon);
}

TEST(SimulatorTest, ServesItsDocumentAlone) {
    const SimulatedPrinter printer({"--no-snmp"}, "<first/>");
    EXPECT_EQ(fetchDocument({.url = printer.url()}).bytes, "<first/>");
    printer.replaceDocument("<second/>");
    EXPECT_EQ(fetchDocument({.url = printer.url()}).bytes, "<second/>");
    EXPECT_EQ(fetchDocument({.url = printer.url() + "/x"}).status, 404);
    EXPECT_EQ(printer.log(), "");
    printer.replaceDocument(std::nullopt);
    EXPECT_EQ(fetchDocument({.url = printer.url()}).status, 500);
    EXPECT_NE(printer.log().find("status.xml: No such file"), std::string::npos);
}

TEST(SimulatorTest, AsksForCredentialsAndLogsWithoutThem) {
    const SimulatedPrinter printer(
        {"--log", "--user", "Jörg", "--tls"}, "<status/>", {{"ORVAN_PASSWORD", "geheim:1"}});
    EXPECT_TRUE(printer.url().starts_with("https://")) << printer.url();
    EXPECT_EQ(fetchDocument({.url = printer.url()}).status, 401);
    EXPECT_EQ(fetchDocument({.url = printer.url(), .user = "Jörg", .password = "geheim"}).status, 401);
    EXPECT_EQ(
        fetchDocument({.url = printer.url(), .user = "Jörg", .password = "geheim:1"}).bytes, "<status/>");
    EXPECT_EQ(printer.log(), "orvan-simulator: GET /status.xml 401 no credentials\n"
                             "orvan-simulator: GET /status.xml 401 credentials\n"
                             "orvan-simulator: GET /status.xml 200 credentials\n");
}

// What its clients make of the other kinds is the command filter's test.
TEST(SimulatorTest, MisbehavesAsItIsTold) {
    const std::string document = "<status>Grün</status>";
    for (const auto& [kind, log] : {std::pair("slow", "GET /status.xml 200"),
             std::pair("redirect", "GET /moved/status.xml 200 credentials"),
             std::pair("redirect-away", "GET /moved/status.xml 200 no credentials")}) {
        const SimulatedPrinter printer({"--log", "--interval", "10", "--misbehave", kind}, document);
        const auto before = std::chrono::steady_clock::now();
        EXPECT_EQ(fetchDocument({.url = printer.url(), .user = "ann"}).bytes, document) << kind;
        const auto time = std::chrono::steady_clock::now() - before;
        EXPECT_NE(printer.log().find(log), std::string::npos) << printer.log();
        const std::size_t pauses = kind == std::string("slow") ? document.size() - 1 : 0;
        EXPECT_GE(time, std::chrono::milliseconds(10) * pauses);
    }
}

TEST(SimulatorTest, AnswersSNMP) {
    const std::string object = "1.3.6.1.4.1.97531.8.83.1.1.2.1.7.1";
    const SimulatedPrinter printer({"--community", "of \"fice", "--job-accounting", "-2147483648"});
    platform::SNMPRequest request{.host = "127.0.0.1",
        .port = std::stoi(portOf(printer.snmpAgent())),
        .communities = {"of \"fice"},
        .objects = {object}};
    platform::Failure problem;
    const auto values = platform::getSNMPObjects(request, problem);
    ASSERT_TRUE(values) << problem.value_or("");
    EXPECT_EQ(values->at(object), platform::PropertyList(-2147483648LL));
    request.objects = {object + ".0"};
    EXPECT_FALSE(platform::getSNMPObjects(request, problem));
    EXPECT_NE(problem.value_or("").find("noSuchName"), std::string::npos) << problem.value_or("");
    request.communities = {"public"};
    request.patience = std::chrono::milliseconds(300); // nothing comes
    EXPECT_FALSE(platform::getSNMPObjects(request, problem));
    EXPECT_EQ(printer.log(), "");
}

TEST(SimulatorTest, EndsWithItsClientsWaiting) {
    for (const auto& [kind, signal] : {std::pair("silent", SIGTERM), std::pair("stall", SIGINT)}) {
        SimulatedPrinter printer({"--misbehave", kind, "--log"});
        const auto client = platform::HTTPStream::create({printer.url(), std::nullopt, std::nullopt});
        ASSERT_TRUE(client && client->open());
        EXPECT_TRUE(eventually([&] {
            client->proceed(std::chrono::milliseconds(1));
            return !printer.log().empty();
        }));
        EXPECT_EQ(printer.end(signal), 0) << kind; // while the client is there
    }
}

TEST(SimulatorTest, RunsACommandAndAnswersForIt) {
    const SimulatedPrinter printer;
    const std::string port = portOf(printer.url());
    const std::string snmpPort = portOf(printer.snmpAgent());
    const std::string show = "echo $ORVAN_SIMULATOR_URL ${ORVAN_SIMULATOR_SNMP-none}; exit 7";
    const std::tuple<std::vector<std::string>, int, const char*> cases[] = {
        {{"--", "sh", "-c", show}, 7, "/status.xml 127.0.0.1:"},
        {{"--no-snmp", "--", "sh", "-c", show}, 7, "/status.xml none"},
        {{"--port", port, "--", "true"}, 1, "TCP port"},
        {{"--snmp-port", snmpPort, "--", "true"}, 1, "UDP port"},
        {{"--document", "/no/such.xml", "--", "true"}, 1,
            "cannot serve the status document /no/such.xml: No such file"},
        {{"--document", "/", "--", "true"}, 1, "cannot serve the status document /: Is a directory"},
        {{"--misbehave", "nicely"}, 2, "nicely"},
        {{"--user", "anna"}, 2, "ORVAN_PASSWORD"},
        {{"--help"}, 0, "redirect-away"},
    };
    for (const auto& [arguments, exitCode, says] : cases) {
        std::vector<std::string> command = {ORVAN_SIMULATOR};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const ProgramEnd end = runProgram(command, {{"ORVAN_PASSWORD", std::nullopt}});
        EXPECT_EQ(end.exitCode, exitCode) << arguments.back() << end.errors;
        EXPECT_NE((end.output + end.errors).find(says), std::string::npos) << end.output << end.errors;
    }
}

} // namespace
} // namespace orvan
