// orvan-printing-system: a printing system of one's own around a command, or until it is interrupted.
#include "TestBed/PrintingSystem/JobReport.h"
#include "TestBed/PrintingSystem/PrintingSystem.h"
#include "TestBed/Session/ServingProgram.h"

#include <iostream>

namespace {

using orvan::Failure;
using orvan::PrintingSystem;

struct Arguments {
    std::vector<std::string> queues;
    std::vector<std::string> devices;
    std::vector<std::string> filterEnvironment;
    std::string defaultQueue;
    orvan::PrintingSystemOptions system;
    bool showJobs = false;
    std::vector<std::string> command;
};

using NameAndValue = std::pair<std::string, std::string>;

// "NAME=VALUE", which the parser has checked.
NameAndValue split(const std::string& text) {
    const std::size_t equals = text.find('=');
    return {text.substr(0, equals), text.substr(equals + 1)};
}

std::string checkNameAndValue(const std::string& text) {
    const std::size_t equals = text.find('=');
    const bool bad = equals == 0 || equals == std::string::npos || equals + 1 == text.size();
    return bad ? "\"" + text + "\" has not the form NAME=VALUE" : "";
}

void describe(CLI::App& app, Arguments& arguments) {
    app.set_version_flag("--version", "orvan-printing-system " ORVAN_VERSION);
    app.add_option("--queue", arguments.queues, "Add a queue with this PPD file; may be repeated")
        ->type_name("NAME=PPD")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(checkNameAndValue);
    app.add_option("--device", arguments.devices,
           "Where a queue's output goes, a device URI; otherwise the file output/NAME in the system's folder")
        ->type_name("NAME=URI")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(checkNameAndValue);
    app.add_option("--default", arguments.defaultQueue, "Make this queue the default")->type_name("NAME");
    app.add_option(
           "--filter", arguments.system.folder.extraFilters, "Add this filter program; may be repeated")
        ->type_name("FILE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(CLI::ExistingFile);
    app.add_option(
           "--backend", arguments.system.folder.extraBackends, "Add this backend program; may be repeated")
        ->type_name("FILE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(CLI::ExistingFile);
    app.add_flag(
        "--keep", arguments.system.folder.keep, "Leave the system's folder behind, and say where it is");
    app.add_option("--filter-environment", arguments.filterEnvironment,
           "Set this variable for filters and backends; may be repeated")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(checkNameAndValue);
    app.add_flag("--show-jobs", arguments.showJobs,
        "After the command, print the jobs that arrived, with their options");
    orvan::addCommandArgument(app, arguments.command);
    app.footer(
        "Without a command, the environment of clients is printed for a shell, and the system stays until "
        "it\n"
        "is interrupted.\n\nExit codes: 0 done, 1 it could not be done, 2 wrong usage; with a command, the "
        "command's.");
}

Failure addQueues(const PrintingSystem& system, const Arguments& arguments) {
    std::map<std::string, std::string> devices;
    for (const std::string& device : arguments.devices)
        devices.insert(split(device));
    for (const std::string& text : arguments.queues) {
        const auto [name, ppd] = split(text);
        const auto device = devices.find(name);
        if (Failure failure = system.addQueue(
                {name, ppd, device == devices.end() ? system.fileDevice(name) : device->second}))
            return failure;
    }
    if (arguments.defaultQueue.empty()) return std::nullopt;
    return system.setDefaultQueue(arguments.defaultQueue);
}

Failure showJobs(const PrintingSystem& system, const Arguments& arguments) {
    for (const std::string& text : arguments.queues) {
        const auto [name, ppd] = split(text);
        if (Failure failure = orvan::reportJobs(system, name, ppd, std::cout)) return failure;
    }
    return std::nullopt;
}

std::optional<orvan::Refusal> serve(
    const orvan::CommandSession& session, const Arguments& arguments, int* exitCode) {
    Failure failure;
    const std::unique_ptr<PrintingSystem> system = PrintingSystem::start(arguments.system, &failure);
    if (!system) return orvan::Refusal{*failure};
    if (arguments.system.folder.keep)
        std::cerr << "orvan-printing-system: the folder is " << system->folder().path().string() << '\n';
    failure = addQueues(*system, arguments);
    if (!failure && !arguments.command.empty()) {
        system->adoptEnvironment();
        failure = session.run(arguments.command, exitCode);
        if (!failure && arguments.showJobs) failure = showJobs(*system, arguments);
    } else if (!failure) {
        std::cout << orvan::shellCommands(system->environment()) << std::flush;
        if (!session.waitForSignal([&system] { return system->scheduler().isRunning(); }))
            failure = "The private scheduler ended by itself. Its last messages:\n" +
                      system->folder().errorLogTail(8);
    }
    return failure ? std::optional(orvan::Refusal{*failure}) : std::nullopt;
}

} // namespace

int main(int argumentCount, char** arguments) {
    Arguments parsed;
    return orvan::runServingProgram(
        {"orvan-printing-system", "Runs a private CUPS scheduler with queues of one's own.",
            [&parsed](CLI::App& app) { describe(app, parsed); },
            [&parsed](const orvan::CommandSession& session, int* exitCode) {
                for (const std::string& variable : parsed.filterEnvironment)
                    parsed.system.folder.programEnvironment.insert(split(variable));
                return serve(session, parsed, exitCode);
            }},
        argumentCount, arguments);
}
