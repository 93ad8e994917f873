// "orvan status" and "orvan papers": what printers answer through their queues.
#include "CommandFilter/Commands.h"
#include "Formats/OneLine.h"
#include "Orvan/AnswerReport.h"
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/Interruption.h"
#include "Orvan/PrinterQuery.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/PublishedPapers.h"
#include "Orvan/StatusMetrics.h"
#include "Orvan/StatusReport.h"
#include "Orvan/Terminal.h"

#include <unistd.h>

#include <algorithm>
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

enum class Form { text, json, metrics };

struct QueryArguments {
    std::string queue;
    AnswerReason noQueue; // why there is none
    std::string release;
    std::chrono::duration<double> timeout{};
    Form form = Form::text;
    bool all = false;               // every Orvan queue instead of one
    bool isVerbose = false;         // all that each of several printers answered, instead of a line
    bool low = false;               // those that need a hand alone
    bool publishes = false;         // the papers' names in the queue's PPD
    std::optional<double> interval; // seconds between two questions; once without

    // Whether each printer is a line of text.
    bool areLines() const { return form == Form::text && (all || low) && !isVerbose; }
};

// What became of a round of questions.
struct Round {
    AnswerReason problem; // why nobody was asked; none otherwise
    std::vector<PrinterAnswers> printers;
};

Round ask(const QueryArguments& arguments) {
    setSystemRelease(arguments.release);
    std::vector<std::string> queues{arguments.queue};
    if (arguments.all) {
        SchedulerProblem problem;
        auto found = orvanQueues(arguments.timeout, problem);
        if (!found) return {reasonOf(problem), {}};
        if (found->empty())
            return {{AnswerCode::noSuchQueue,
                        "there is no queue of an Orvan printer (\"lpstat -v\" lists the queues)"},
                {}};
        queues = *std::move(found);
    }
    if (!arguments.noQueue.isNone()) {
        Round round;
        round.printers.emplace_back().problem = arguments.noQueue;
        return round;
    }
    Round round{{}, askPrinters(queues, arguments.timeout)};
    if (wasInterrupted())
        round.problem = {AnswerCode::interrupted, "interrupted; the printer is not asked any more"};
    return round;
}

// Whether somebody has to do something about the printer.
bool needsHand(const PrinterAnswers& printer) {
    return !printer.problem.isNone() || pageOf(printer.responses(), printer.ppd.get()).needsHand();
}

void complain(const std::string& sentence) {
    if (!sentence.empty()) say(sentence);
}

// What is written again and again has the time of each.
void addTime(Json& json, const QueryArguments& arguments) {
    if (arguments.interval) json["time"] = jsonTime(std::chrono::system_clock::now());
}

void writeJSON(const Round& round, const QueryArguments& arguments) {
    Json json{{"schemaVersion", kAnswerSchema}};
    addTime(json, arguments);
    json["release"] = currentRelease();
    if (!arguments.all) {
        json.update(jsonOf(round.printers.front()));
    } else {
        json["problem"] = round.problem.sentence();
        json["code"] = wordFor(round.problem.code);
        json["printers"] = Json::array();
        for (const PrinterAnswers& printer : round.printers)
            json["printers"].push_back(jsonOf(printer));
    }
    std::cout << jsonText(json) << '\n';
}

// Of one printer, or of one of several under its name.
void writePage(const PrinterAnswers& printer, bool isNamed) {
    const std::vector<platform::PropertyList> responses = printer.responses();
    std::ostringstream status;
    writeStatus(responses, printer.ppd.get(), isDecorated(STDOUT_FILENO), status);
    if (isNamed) {
        const auto askedAt = printer.askedAt();
        std::cout << printer.queue << (askedAt ? ", answers of " + timeText(*askedAt) : "") << '\n';
    }
    std::istringstream lines(status.str());
    for (std::string line; std::getline(lines, line);)
        std::cout << (isNamed ? "  " : "") << line << '\n';
}

// "Office   4 trays, Tray 3 low; yellow 7 %; 14:05"
void writeLine(const PrinterAnswers& printer, std::size_t columns) {
    std::string text = summaryOf(pageOf(printer.responses(), printer.ppd.get()));
    const auto add = [&text](const std::string& part) {
        if (!part.empty()) text.append(text.empty() ? "" : "; ").append(part);
    };
    if (const auto askedAt = printer.askedAt()) add(timeText(*askedAt));
    add(printer.problem.brief());
    std::cout << printer.queue << std::string(columns - printer.queue.size(), ' ') << text << '\n';
}

void writeText(const std::vector<PrinterAnswers>& printers, const QueryArguments& arguments) {
    std::size_t columns = 0;
    for (const PrinterAnswers& printer : printers)
        columns = std::max(columns, printer.queue.size() + 3);
    for (const PrinterAnswers& printer : printers)
        arguments.areLines() ? writeLine(printer, columns) : writePage(printer, arguments.all);
}

// Above what is written again and again: on a terminal it stays in its place.
void writeTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::cout << (isDecorated(STDOUT_FILENO) ? "\033[H\033[2J" : "") << std::put_time(&local, "%F %T")
              << '\n';
}

// Whether the scheduler answered all that it was asked.
bool hasScheduler(const Round& round) {
    const auto isGone = [](const AnswerReason& reason) {
        return reason.code >= AnswerCode::schedulerNotThere && reason.code < AnswerCode::schedulerRefuses;
    };
    return !isGone(round.problem) && std::ranges::none_of(round.printers, isGone, &PrinterAnswers::problem);
}

int showStatus(const QueryArguments& arguments) {
    Round round = ask(arguments);
    const auto isWell = [](const PrinterAnswers& printer) { return printer.problem.isNone(); };
    const bool isDone = round.problem.isNone() && std::ranges::all_of(round.printers, isWell);
    // JSON about one printer is about it in any case.
    if (arguments.low && (arguments.all || arguments.form == Form::text))
        std::erase_if(round.printers, [](const PrinterAnswers& printer) { return !needsHand(printer); });
    if (arguments.interval && arguments.form == Form::text) writeTime();
    std::cout.flush();
    complain(round.problem.text);
    // A line of several says it itself.
    if (round.problem.isNone() && !arguments.areLines())
        for (const PrinterAnswers& printer : round.printers)
            complain(complaintOf(printer));
    switch (arguments.form) {
    case Form::json:
        writeJSON(round, arguments);
        break;
    case Form::metrics:
        writeMetrics(hasScheduler(round), round.printers, std::cout);
        break;
    case Form::text:
        if (round.problem.isNone()) writeText(round.printers, arguments);
        break;
    }
    return isDone ? kDone : kNotDone;
}

int status(const QueryArguments& arguments) {
    int code = showStatus(arguments);
    while (arguments.interval && !wasInterrupted() && std::cout.flush()) {
        // With nothing to take back, a signal may end the process.
        std::this_thread::sleep_for(std::chrono::duration<double>(*arguments.interval));
        code = showStatus(arguments);
    }
    return code;
}

// The filter leaves out a type that makes no keyword of a PPD, so nobody can ask for such a paper.
constexpr const char* kNoType = "(no type)";

// Of all answers, the one with the custom papers; one that says why there is none, where there is none.
CommandAnswer papersAnswer(const PrinterAnswers& printer) {
    for (const CommandAnswer& answer : printer.commands)
        if (answer.list && answer.list->find(OVOVGCustomPaperTypes) != nullptr) return answer;
    const auto isAsked = [](const CommandAnswer& answer) {
        const CommandSpec* const command = findCommand(answer.command);
        return command != nullptr && command->keys.front() == OVOVGCustomPaperTypes;
    };
    const auto asked = std::ranges::find_if(printer.commands, isAsked);
    if (asked != printer.commands.end()) return *asked;
    if (!printer.problem.isNone()) return {.command = {}, .reason = printer.problem};
    return {.command = {},
        .reason = {AnswerCode::noCommands, "the queue's PPD does not list the command for custom papers"}};
}

int papers(const QueryArguments& arguments) {
    const Round round = ask(arguments);
    const PrinterAnswers& printer = round.printers.front();
    CommandAnswer answer = papersAnswer(printer);
    if (!round.problem.isNone()) answer.reason = round.problem;
    const std::vector<CustomPaper> found =
        answer.list ? customPapers({*answer.list}) : std::vector<CustomPaper>();
    if (!answer.reason.isNone())
        complain(wasInterrupted()
                     ? round.problem.text
                     : complaintOf(printer.queue, answer.reason, answer.list.has_value(), answer.askedAt));
    Json list = Json::array();
    const auto isKnown = [&printer](const CustomPaper& paper) {
        return std::ranges::find(printer.unknownPapers, paper) == printer.unknownPapers.end();
    };
    for (const CustomPaper& paper : found) {
        list.push_back({{"name", paper.name}, {"type", paper.type}, {"baseClass", paper.baseClass},
            {"inDriver", isKnown(paper)}});
        if (arguments.form == Form::text)
            std::cout << platform::onOneLine(paper.name) << '\t'
                      << (paper.type.empty() ? kNoType : platform::onOneLine(paper.type)) << '\t'
                      << platform::onOneLine(paper.baseClass) << '\n';
    }
    if (arguments.form == Form::json) {
        Json json{{"schemaVersion", kAnswerSchema}, {"queue", printer.queue}};
        addOutcome(json, answer.askedAt, answer.reason);
        json["papers"] = std::move(list);
        std::cout << jsonText(json) << '\n';
    }
    for (const CustomPaper& paper : printer.unknownPapers)
        complain("the driver of queue " + printer.queue + " cannot name " + platform::onOneLine(paper.name) +
                 " to the printer");
    if (!answer.reason.isNone()) return kNotDone;
    return arguments.publishes
               ? publishPapers(printer.queue, found, SchedulerPatience(arguments.timeout).time())
               : kDone;
}

QueryArguments queryIn(const Arguments& arguments) {
    QueryArguments query;
    query.release = arguments.text("--release");
    query.timeout = timeoutIn(arguments);
    if (arguments.has("--json")) query.form = Form::json;
    return query;
}

// With the queue that was named, or the default one.
QueryArguments withQueue(const Arguments& arguments, QueryArguments query) {
    SchedulerProblem problem;
    if (auto queue = queueIn(arguments, SchedulerPatience(query.timeout).time(), problem))
        query.queue = *std::move(queue);
    else
        query.noQueue = reasonOf(problem);
    return query;
}

int runStatus(const Arguments& arguments) {
    QueryArguments query = queryIn(arguments);
    query.all = arguments.has("--all");
    query.isVerbose = arguments.has("--verbose");
    query.low = arguments.has("--low");
    query.interval = arguments.number("--watch");
    if (arguments.has("--metrics")) query.form = Form::metrics;
    return query.all ? status(query) : status(withQueue(arguments, std::move(query)));
}

int runPapers(const Arguments& arguments) {
    QueryArguments query = withQueue(arguments, queryIn(arguments));
    query.publishes = arguments.has("--publish");
    if (!arguments.has("--unpublish")) return papers(query);
    if (!query.noQueue.isNone()) return cannot(query.noQueue.text);
    return unpublishPapers(query.queue, SchedulerPatience(query.timeout).time());
}

constexpr ArgumentSpec kStatusArguments[]{
    inGroup(kQueueOption, "printers"),
    {.name = "--all", .text = "Every queue of an Orvan printer, all at once", .group = "printers"},
    {.name = "-v,--verbose", .text = "All that each printer answered, instead of a line"},
    {.name = "--low", .text = "Only printers that need a hand: low, empty, or without an answer"},
    {.name = "--watch",
        .text = "Ask again and again, until Ctrl-C",
        .value = "SECONDS",
        .check = checkPositive},
    kServerOption,
    kReleaseOption,
    kTimeoutOption,
    inGroup(kJSONFlag, "form"),
    {.name = "--metrics", .text = "Answer in OpenMetrics text, for monitoring", .group = "form"},
};

constexpr ArgumentSpec kPapersArguments[]{
    kQueueOption,
    kServerOption,
    kReleaseOption,
    kTimeoutOption,
    kJSONFlag,
    {.name = "--publish",
        .text =
            "Make the names titles in the queue's PPD, for all clients of the scheduler; for administrators",
        .group = "publishing"},
    {.name = "--unpublish",
        .text = "Take the names out of the queue's PPD again; the printer is not asked",
        .group = "publishing"},
};

} // namespace

const Command kStatusCommand{
    .name = "status",
    .text = "Ask printers for their trays, supplies, papers, jobs and permissions",
    .arguments = kStatusArguments,
    .footer = "Examples:\n"
              "  orvan status -q Office\n"
              "  orvan status --all --low --watch 60\n"
              "  orvan status --all --json | jq -r '.printers[] | select(.fresh | not).queue'",
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
