// "orvan status" and "orvan papers": what printers answer through their queues.
#include "Formats/OneLine.h"
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/Interruption.h"
#include "Orvan/PrinterQuery.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/StatusReport.h"
#include "Orvan/Terminal.h"

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;

struct QueryArguments {
    std::string queue;
    std::string release;
    std::chrono::duration<double> timeout{};
    bool json = false;
    bool all = false;               // every Orvan queue instead of one
    std::optional<double> interval; // seconds between two questions; once without
};

// What several printers answered.
using Answers = std::vector<PrinterAnswers>;

// Answers of the queues that the arguments name; nothing, and a message is written, when there are none.
std::optional<Answers> ask(const QueryArguments& arguments) {
    setSystemRelease(arguments.release);
    std::vector<std::string> queues{arguments.queue};
    if (arguments.all) {
        platform::Failure problem;
        auto found = orvanQueues(arguments.timeout, problem);
        if (found && found->empty())
            problem = "there is no queue of an Orvan printer (\"lpstat -v\" lists the queues)";
        if (!found || found->empty()) {
            cannot(*problem);
            return std::nullopt;
        }
        queues = *std::move(found);
    }
    Answers answers = askPrinters(queues, arguments.timeout);
    if (!wasInterrupted()) return answers;
    cannot("interrupted; the printer is not asked any more");
    return std::nullopt;
}

// What is wrong with the answers, on standard error.
int complain(const Answers& answers) {
    int code = kDone;
    for (const PrinterAnswers& printer : answers) {
        if (!printer.problem.empty()) code = cannot(platform::onOneLine(printer.problem));
        if (!printer.complaint.empty())
            std::cerr << "orvan: printer " << printer.queue
                      << " was asked in vain, its earlier answers follow: "
                      << platform::onOneLine(printer.complaint) << '\n';
    }
    return code;
}

// RFC 3339, in UTC; null when it is not known.
Json answeredAt(const PrinterAnswers& printer) {
    if (!printer.askedAt) return nullptr;
    const std::time_t time = std::chrono::system_clock::to_time_t(*printer.askedAt);
    std::tm utc{};
    gmtime_r(&time, &utc);
    std::ostringstream text;
    text << std::put_time(&utc, "%FT%TZ");
    return text.str();
}

Json responsesIn(const PrinterAnswers& printer) {
    Json responses = Json::array();
    for (const platform::PropertyList& response : printer.responses)
        responses.push_back(jsonFromPropertyList(response));
    return responses;
}

void writeJSON(const Answers& answers, bool all) {
    if (!all) {
        const PrinterAnswers& printer = answers.front();
        if (printer.problem.empty())
            std::cout << jsonText(Json{{"schemaVersion", 1}, {"queue", printer.queue},
                             {"release", currentRelease()}, {"complaint", printer.complaint},
                             {"answeredAt", answeredAt(printer)}, {"responses", responsesIn(printer)}})
                      << '\n';
        return;
    }
    Json printers = Json::array();
    for (const PrinterAnswers& printer : answers)
        printers.push_back(
            {{"queue", printer.queue}, {"problem", printer.problem}, {"complaint", printer.complaint},
                {"answeredAt", answeredAt(printer)}, {"responses", responsesIn(printer)}});
    std::cout << jsonText(Json{
                     {"schemaVersion", 1}, {"release", currentRelease()}, {"printers", std::move(printers)}})
              << '\n';
}

// A printer of several: under its name.
void writeNamed(const PrinterAnswers& printer, bool decorated) {
    std::ostringstream status;
    writeStatus(printer.responses, decorated, status);
    std::cout << printer.queue << '\n';
    std::istringstream lines(status.str());
    for (std::string line; std::getline(lines, line);)
        std::cout << "  " << line << '\n';
}

void writeText(const Answers& answers, bool all) {
    const bool decorated = isDecorated(STDOUT_FILENO);
    const char* separator = "";
    for (const PrinterAnswers& printer : answers) {
        if (!printer.problem.empty()) continue;
        std::cout << std::exchange(separator, "\n");
        all ? writeNamed(printer, decorated) : writeStatus(printer.responses, decorated, std::cout);
    }
}

// Above what is written again and again: on a terminal it stays in its place.
void writeTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::cout << (isDecorated(STDOUT_FILENO) ? "\033[H\033[2J" : "") << std::put_time(&local, "%F %T")
              << '\n';
}

int showStatus(const QueryArguments& arguments) {
    const std::optional<Answers> answers = ask(arguments);
    if (!answers) return kNotDone;
    if (arguments.interval && !arguments.json) writeTime();
    std::cout.flush();
    const int code = complain(*answers);
    arguments.json ? writeJSON(*answers, arguments.all) : writeText(*answers, arguments.all);
    return code;
}

int status(const QueryArguments& arguments) {
    int code = showStatus(arguments);
    while (arguments.interval && !wasInterrupted() && std::cout.flush()) {
        // With nothing to take back, a signal may end the process.
        std::this_thread::sleep_for(std::chrono::duration<double>(*arguments.interval));
        if (!arguments.json) std::cout << '\n';
        code = showStatus(arguments);
    }
    return code;
}

// The filter leaves out a type that makes no keyword of a PPD, so nobody can ask for such a paper.
constexpr const char* kNoType = "(no type)";

int papers(const QueryArguments& arguments) {
    const std::optional<Answers> answers = ask(arguments);
    if (!answers) return kNotDone;
    const PrinterAnswers& printer = answers->front();
    if (complain(*answers) != kDone) return kNotDone;
    Json list = Json::array();
    const auto isKnown = [&printer](const CustomPaper& paper) {
        return std::ranges::find(printer.unknownPapers, paper) == printer.unknownPapers.end();
    };
    for (const CustomPaper& paper : customPapers(printer.responses)) {
        if (arguments.json)
            list.push_back({{"name", paper.name}, {"type", paper.type}, {"baseClass", paper.baseClass},
                {"inDriver", isKnown(paper)}});
        else
            std::cout << platform::onOneLine(paper.name) << '\t'
                      << (paper.type.empty() ? kNoType : platform::onOneLine(paper.type)) << '\t'
                      << platform::onOneLine(paper.baseClass) << '\n';
    }
    if (arguments.json)
        std::cout << jsonText(Json{{"schemaVersion", 1}, {"queue", arguments.queue},
                         {"complaint", printer.complaint}, {"answeredAt", answeredAt(printer)},
                         {"papers", std::move(list)}})
                  << '\n';
    for (const CustomPaper& paper : printer.unknownPapers)
        std::cerr << "orvan: the driver of queue " << printer.queue << " cannot name "
                  << platform::onOneLine(paper.name) << " to the printer\n";
    return kDone;
}

QueryArguments queryIn(const Arguments& arguments) {
    return {.queue = {},
        .release = arguments.text("--release"),
        .timeout = timeoutIn(arguments),
        .json = arguments.has("--json"),
        .all = false,
        .interval = std::nullopt};
}

// Does `ask` with the queue that was named, or with the default one.
int withQueue(const Arguments& arguments, QueryArguments query, int (*ask)(const QueryArguments&)) {
    platform::Failure problem;
    const auto queue = queueIn(arguments, SchedulerPatience(query.timeout).time(), problem);
    if (!queue) return cannot(*problem);
    query.queue = *queue;
    return ask(query);
}

int runStatus(const Arguments& arguments) {
    QueryArguments query = queryIn(arguments);
    query.all = arguments.has("--all");
    query.interval = arguments.number("--watch");
    return query.all ? status(query) : withQueue(arguments, query, status);
}

int runPapers(const Arguments& arguments) {
    return withQueue(arguments, queryIn(arguments), papers);
}

constexpr ArgumentSpec kStatusArguments[]{
    inGroup(kQueueOption, "printers"),
    {.name = "--all", .text = "Every queue of an Orvan printer, all at once", .group = "printers"},
    {.name = "--watch",
        .text = "Ask again and again, until Ctrl-C",
        .value = "SECONDS",
        .check = checkPositive},
    kServerOption,
    kReleaseOption,
    kTimeoutOption,
    kJSONFlag,
};

constexpr ArgumentSpec kPapersArguments[]{
    kQueueOption,
    kServerOption,
    kReleaseOption,
    kTimeoutOption,
    kJSONFlag,
};

} // namespace

const Command kStatusCommand{
    .name = "status",
    .text = "Ask printers for their trays, supplies, papers, jobs and permissions",
    .arguments = kStatusArguments,
    .footer = "Examples:\n"
              "  orvan status -q Office\n"
              "  orvan status --all --watch 60\n"
              "  orvan status --all --json | jq -r '.printers[] | select(.problem != \"\").queue'",
    .run = runStatus,
};

const Command kPapersCommand{
    .name = "papers",
    .text = "Ask the printer for its custom paper types",
    .arguments = kPapersArguments,
    .footer = "One line a paper: name, type, base class, separated by tabs.\n"
              "Examples:\n"
              "  orvan papers -q Office\n"
              "  orvan papers -q Office -H print.example | cut -f 1",
    .run = runPapers,
};

} // namespace orvan
