// orvan-simulator: a printer for demonstrations and tests, around a command, or until it is interrupted.
#include "TestBed/Session/ClientEnvironment.h"
#include "TestBed/Session/ServingProgram.h"
#include "TestBed/Simulator/SNMPAgent.h"
#include "TestBed/Simulator/StatusServer.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <limits>
#include <system_error>

namespace {

using orvan::Failure;
using orvan::kMisbehaviours;

constexpr const char* kPasswordVariable = "ORVAN_PASSWORD";

struct Arguments {
    orvan::StatusServerOptions status;
    std::string misbehaviour;
    int intervalInMilliseconds = 1000;
    orvan::SNMPAgentOptions snmp;
    bool noSNMP = false;
    std::vector<std::string> command;
};

const orvan::MisbehaviourSpec* findMisbehaviour(const std::string& name) {
    const auto* found = std::find_if(kMisbehaviours.begin(), kMisbehaviours.end(),
        [&name](const orvan::MisbehaviourSpec& spec) { return spec.name == name; });
    return found == kMisbehaviours.end() ? nullptr : found;
}

std::string checkMisbehaviour(const std::string& name) {
    return findMisbehaviour(name) ? "" : "\"" + name + "\" is no kind of misbehaviour; --help lists them";
}

// The configuration of the agent takes a line and has no way to write other characters.
std::string checkCommunity(const std::string& text) {
    const bool plain = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return plain && !text.empty() && text.size() <= 32 ? "" : "a community is 1 to 32 ASCII characters";
}

std::string footer() {
    std::string text = "KIND of misbehaviour:\n";
    for (const orvan::MisbehaviourSpec& spec : kMisbehaviours)
        text.append("  ").append(spec.name).append(16 - spec.name.size(), ' ').append(spec.description) +=
            '\n';
    return text +
           "\nThe command finds the status document by ORVAN_SIMULATOR_URL and the SNMP agent by\n"
           "ORVAN_SIMULATOR_SNMP (ADDRESS:PORT). Without a command, both are printed for a shell as soon as "
           "the\nprinter answers, and it stays until it is interrupted.\n\n"
           "Exit codes: 0 done, 1 it could not be done, 2 wrong usage; with a command, the command's.";
}

void describeStatus(CLI::App& app, Arguments& arguments) {
    app.add_option("--document", arguments.status.document,
           "The status document, read anew for every request; otherwise a built-in one with four trays")
        ->type_name("FILE");
    app.add_option("--port", arguments.status.port, "Serve on this TCP port; 0, or none given: a free one")
        ->type_name("N")
        ->check(CLI::Range(0, 65535));
    app.add_flag("--tls", arguments.status.tls,
        "Serve HTTPS instead of HTTP, with a certificate that the printer made and signed itself");
    app.add_option("--user", arguments.status.user,
           std::string("Ask for this user's credentials (Basic); the password is the value of ") +
               kPasswordVariable)
        ->type_name("NAME")
        ->check([](const std::string& name) {
            const bool bad = name.empty() || name.find(':') != std::string::npos;
            return bad ? std::string("a user's name is not empty and has no colon") : std::string();
        });
    app.add_option("--misbehave", arguments.misbehaviour, "Do this wrong; see below")
        ->type_name("KIND")
        ->check(checkMisbehaviour);
    app.add_option("--interval", arguments.intervalInMilliseconds,
           "Milliseconds between the bytes of a slow document, 1000 when not given")
        ->type_name("MS")
        ->check(CLI::Range(0, 3'600'000));
    app.add_flag("--log", arguments.status.log,
        "Write each request to standard error: method, path, status, and whether credentials came with it");
}

void describeSNMP(CLI::App& app, Arguments& arguments) {
    app.add_option(
           "--snmp-port", arguments.snmp.port, "Answer SNMP on this UDP port; 0, or none given: a free one")
        ->type_name("N")
        ->check(CLI::Range(0, 65535));
    app.add_option("--community", arguments.snmp.community,
           "The community that may read, in SNMPv1 and SNMPv2c, public when not given")
        ->type_name("NAME")
        ->check(checkCommunity);
    app.add_option("--job-accounting", arguments.snmp.jobAccounting,
           "The value of the object 1.3.6.1.4.1.97531.8.83.1.1.2.1.7.1, 1 when not given")
        ->type_name("N")
        ->check(CLI::Range(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    app.add_flag("--no-snmp", arguments.noSNMP, "Do not answer SNMP");
}

void describe(CLI::App& app, Arguments& arguments) {
    app.set_version_flag("--version", "orvan-simulator " ORVAN_VERSION);
    describeStatus(app, arguments);
    describeSNMP(app, arguments);
    orvan::addCommandArgument(app, arguments.command);
    app.footer(footer());
}

// Why the document cannot be served; nothing when it can. It may still go later, and come back.
Failure problemWith(const std::filesystem::path& document) {
    if (document.empty()) return std::nullopt;
    std::error_code ignored;
    if (std::filesystem::is_directory(document, ignored))
        errno = EISDIR;
    else if (::access(document.c_str(), R_OK) == 0)
        return std::nullopt;
    return "cannot serve the status document " + document.string() + ": " + std::strerror(errno) + '.';
}

// What the parser does not do. False when the password is missing.
bool complete(Arguments& arguments) {
    if (!arguments.misbehaviour.empty())
        arguments.status.misbehaviour = findMisbehaviour(arguments.misbehaviour)->kind;
    arguments.status.interval = std::chrono::milliseconds(arguments.intervalInMilliseconds);
    const char* password = std::getenv(kPasswordVariable);
    if (password) arguments.status.password = password;
    return password || arguments.status.user.empty();
}

std::optional<orvan::Refusal> serve(
    const orvan::CommandSession& session, const Arguments& arguments, int* exitCode) {
    Failure failure = problemWith(arguments.status.document);
    if (failure) return orvan::Refusal{*failure};
    const std::unique_ptr<orvan::StatusServer> status =
        orvan::StatusServer::start(arguments.status, &failure);
    if (!status) return orvan::Refusal{*failure};
    std::unique_ptr<orvan::SNMPAgent> agent;
    if (!arguments.noSNMP && !(agent = orvan::SNMPAgent::start(arguments.snmp, &failure)))
        return orvan::Refusal{*failure};
    const orvan::ClientEnvironment environment = {{"ORVAN_SIMULATOR_URL", status->url()},
        {"ORVAN_SIMULATOR_SNMP", agent ? std::optional(agent->address()) : std::nullopt}};
    if (arguments.command.empty()) {
        std::cout << orvan::shellCommands(environment) << std::flush;
        static_cast<void>(session.waitForSignal([] { return true; }));
        return std::nullopt;
    }
    orvan::adoptEnvironment(environment);
    failure = session.run(arguments.command, exitCode);
    return failure ? std::optional(orvan::Refusal{*failure}) : std::nullopt;
}

} // namespace

int main(int argumentCount, char** arguments) {
    Arguments parsed;
    const auto refuse = [] {
        return orvan::Refusal{
            std::string("--user needs a password in the variable ") + kPasswordVariable + '.', true};
    };
    return orvan::runServingProgram(
        {"orvan-simulator", "A simulated Orvan printer on this machine (127.0.0.1).",
            [&parsed](CLI::App& app) { describe(app, parsed); },
            [&parsed, &refuse](const orvan::CommandSession& session, int* exitCode) {
                return complete(parsed) ? serve(session, parsed, exitCode) : refuse();
            }},
        argumentCount, arguments);
}
