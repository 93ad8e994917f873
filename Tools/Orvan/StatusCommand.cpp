// "orvan status" and "orvan papers": what the printer answers through its queue.
#include "Common/Utilities/OneLine.h"
#include "Tools/Orvan/Command.h"
#include "Tools/Orvan/PrinterQuery.h"
#include "Tools/Orvan/PropertyListJson.h"
#include "Tools/Orvan/StatusReport.h"

#include <iostream>
#include <memory>
#include <string>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;

struct QueryArguments {
    std::string queue;
    std::string release;
    double timeout = 10;
    bool json = false;
};

PrinterAnswers ask(const QueryArguments& arguments) {
    setSystemRelease(arguments.release);
    PrinterAnswers answers = askPrinter(arguments.queue, std::chrono::duration<double>(arguments.timeout));
    if (!answers.complaint.empty())
        std::cerr << "orvan: printer " << arguments.queue
                  << " was asked in vain, its earlier answers follow: " << onOneLine(answers.complaint)
                  << '\n';
    return answers;
}

int status(const QueryArguments& arguments) {
    const PrinterAnswers answers = ask(arguments);
    if (!answers.problem.empty()) return cannot(answers.problem);
    if (!arguments.json) {
        writeStatus(answers.responses, std::cout);
        return kDone;
    }
    Json responses = Json::array();
    for (const platform::PropertyList& response : answers.responses)
        responses.push_back(jsonFromPropertyList(response));
    std::cout << Json{{"schemaVersion", 1}, {"queue", arguments.queue}, {"release", currentRelease()},
                     {"complaint", answers.complaint}, {"responses", std::move(responses)}}
              << '\n';
    return kDone;
}

int papers(const QueryArguments& arguments) {
    const PrinterAnswers answers = ask(arguments);
    if (!answers.problem.empty()) return cannot(answers.problem);
    Json list = Json::array();
    for (const CustomPaper& paper : customPapers(answers.responses)) {
        if (arguments.json)
            list.push_back({{"name", paper.name}, {"type", paper.type}, {"baseClass", paper.baseClass}});
        else
            std::cout << onOneLine(paper.name) << '\t' << onOneLine(paper.type) << '\t'
                      << onOneLine(paper.baseClass) << '\n';
    }
    if (arguments.json)
        std::cout << Json{{"schemaVersion", 1}, {"queue", arguments.queue}, {"complaint", answers.complaint},
                         {"papers", std::move(list)}}
                  << '\n';
    return kDone;
}

void addQuery(CLI::App* command, CommandBody& run, int (*body)(const QueryArguments&)) {
    const auto arguments = std::make_shared<QueryArguments>();
    command->add_option("-q,--queue", arguments->queue, "A queue of the print scheduler")
        ->type_name("QUEUE")
        ->required();
    command->add_option("--release", arguments->release, "The system release to stand for (default 10.9.0)")
        ->type_name("R")
        ->check(checkRelease);
    command->add_option("--timeout", arguments->timeout, "How long to wait for the answer (default 10)")
        ->type_name("SECONDS")
        ->check(CLI::NonNegativeNumber);
    command->add_flag("--json", arguments->json, "Answer in JSON");
    command->callback([arguments, body, &run] { run = [arguments, body] { return body(*arguments); }; });
}

} // namespace

void addStatusCommand(CLI::App& program, CommandBody& run) {
    CLI::App* command = program.add_subcommand(
        "status", "Ask the printer for its trays, supplies, papers, jobs and permissions");
    addQuery(command, run, status);
    command->footer("Example: orvan status -q Office");
}

void addPapersCommand(CLI::App& program, CommandBody& run) {
    CLI::App* command = program.add_subcommand("papers", "Ask the printer for its custom paper types");
    addQuery(command, run, papers);
    command->footer(
        "One line a paper: name, type, base class, separated by tabs.\nExample: orvan papers -q Office");
}

} // namespace orvan
