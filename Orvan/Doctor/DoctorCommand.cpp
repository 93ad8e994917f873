// "orvan doctor": the whole way from the scheduler to the tab, station by station.
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/Doctor/DesktopStations.h"
#include "Orvan/Doctor/QueueCheckup.h"
#include "Orvan/Interruption.h"
#include "Orvan/PrinterQuery.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <future>
#include <string>
#include <vector>

namespace orvan {
namespace {

struct DoctorArguments {
    std::string queue; // "": every queue of an Orvan printer
    std::chrono::duration<double> timeout{};
    bool json = false;
    bool problemsAlone = false;
};

// The queues to look at, with what the scheduler says of them.
struct Patients {
    std::vector<std::string> names;
    std::vector<SchedulerQueue> queues; // all of the scheduler's
};

// What to do about a scheduler that did not do what it was asked for.
const char* adviceFor(SchedulerProblem::Kind kind) {
    using Kind = SchedulerProblem::Kind;
    switch (kind) {
    case Kind::notThere:
        return isSchedulerHere() ? "\"systemctl start cups\" starts this computer's."
                                 : "See whether that computer is on and its scheduler listens to others "
                                   "(\"cupsctl --remote-any\" there), or name another one (--server).";
    case Kind::forbidden:
        return "Let this user open the scheduler's socket (\"ls -l\" shows who may), or name another one "
               "(--server).";
    case Kind::silent:
        return "See whether it is busy or stopped (\"systemctl status cups\" on its computer), or wait "
               "longer "
               "(--timeout).";
    case Kind::wantsPassword:
        return "Let this user ask without one: the policy in the scheduler's cupsd.conf says who may do "
               "what.";
    case Kind::none:
    case Kind::unknown:
    case Kind::severalPrinters:
    case Kind::rejectsJobs:
    case Kind::notPermitted:
    case Kind::noRoom:
    case Kind::refuses:
        break;
    }
    return "Look at its error log.";
}

Finding examineScheduler(const DoctorArguments& arguments, Patients& patients) {
    SchedulerProblem trouble;
    const auto time = SchedulerPatience(arguments.timeout).time();
    auto queues = listQueues(time, trouble);
    if (!queues) return problem(trouble.text, adviceFor(trouble.kind));
    patients.queues = *std::move(queues);
    const std::string count = std::to_string(patients.queues.size());
    if (!arguments.queue.empty())
        patients.names = {arguments.queue};
    else if (auto names = orvanQueues(arguments.timeout, trouble))
        patients.names = *std::move(names);
    else
        return problem(trouble.text, adviceFor(trouble.kind));
    return ok(schedulerName() + " answers; it has " + count + (count == "1" ? " queue" : " queues"));
}

std::optional<SchedulerQueue> queueOf(const Patients& patients, const std::string& name) {
    const auto found = std::ranges::find(patients.queues, name, &SchedulerQueue::name);
    return found != patients.queues.end() ? std::optional(*found) : std::nullopt;
}

// As many at a time wait for the network.
constexpr std::size_t kMostAtOnce = 32;

void lookAtPrinters(std::deque<QueueCheckup>& queues) {
    ProgressLine line;
    line.show("Looking at: printers");
    std::atomic<std::size_t> next = 0;
    std::vector<std::future<void>> workers;
    for (std::size_t i = 0; i < std::min(queues.size(), kMostAtOnce); ++i)
        workers.push_back(std::async(std::launch::async, [&] {
            for (std::size_t n = next++; n < queues.size(); n = next++)
                queues[n].lookAtPrinter();
        }));
    for (std::future<void>& worker : workers)
        worker.get();
}

// All queues side by side, so that many take as long as the slowest.
void examineQueues(const Patients& patients, const DoctorArguments& arguments, Checkup& checkup) {
    SchedulerPatience patience(arguments.timeout);
    std::deque<QueueCheckup> queues; // which stay where they are
    std::vector<std::string> asked;
    for (const std::string& name : patients.names) {
        QueueCheckup& queue = queues.emplace_back(name, queueOf(patients, name), patients.queues, patience);
        queue.begin();
        if (queue.wantsAnswers()) asked.push_back(name);
    }
    const std::vector<PrinterAnswers> answers = askPrinters(asked, arguments.timeout);
    for (QueueCheckup& queue : queues) {
        const auto own = std::ranges::find(answers, queue.name(), &PrinterAnswers::queue);
        if (own != answers.end()) queue.answered(*own);
    }
    if (!wasInterrupted()) lookAtPrinters(queues);
    for (const QueueCheckup& queue : queues)
        for (QueueCheckup::Station& station : queue.findings())
            checkup.add(station.name, queue.name(), std::move(station.finding));
}

int examine(const DoctorArguments& arguments) {
    Checkup checkup({.json = arguments.json, .problemsAlone = arguments.problemsAlone});
    Patients patients;
    const bool hasScheduler =
        checkup.look("scheduler", [&] { return examineScheduler(arguments, patients); });
    if (hasScheduler && patients.names.empty())
        checkup.look("queue", [] {
            return problem("there is no queue of an Orvan printer",
                "Add one in the system's printer settings, with the driver Orvan 4500.");
        });
    const std::vector<std::string>& names = patients.names;
    if (names.empty() && !arguments.queue.empty()) checkup.setQueueColumns(arguments.queue.size());
    if (!names.empty()) checkup.setQueueColumns(std::ranges::max(names, {}, &std::string::size).size());
    if (hasScheduler && !names.empty())
        examineQueues(patients, arguments, checkup);
    else if (!hasScheduler)
        for (const auto& [station, finding] : QueueCheckup::notLookedAt("the scheduler has to answer first"))
            checkup.add(station, arguments.queue, finding);
    if (wasInterrupted()) {
        const std::string problem = "interrupted; not everything was looked at";
        checkup.end(problem);
        return cannot(problem);
    }
    examineDesktop(checkup);
    checkup.end();
    return checkup.allIsWell() ? kDone : kNotDone;
}

int examineFor(const Arguments& arguments) {
    return examine({.queue = arguments.text("--queue"),
        .timeout = timeoutIn(arguments),
        .json = arguments.has("--json"),
        .problemsAlone = arguments.has("--problems")});
}

constexpr ArgumentSpec kDoctorArguments[]{
    {.name = kQueueOption.name,
        .text = "A queue of the print scheduler; without it, every queue of an Orvan printer",
        .value = kQueueOption.value},
    kServerOption,
    kTimeoutOption,
    {.name = "--problems", .text = "Only the stations with a problem"},
    kJSONFlag,
};

} // namespace

const Command kDoctorCommand{
    .name = "doctor",
    .text = "Find out what keeps the paper options or a printer's status away",
    .arguments = kDoctorArguments,
    .footer = "One line a station: ok, problem or not checked, its queue, what was found, and how to mend\n"
              "it; then how many of each. Queues are looked at side by side.\n"
              "The exit code is 0 when no station has a problem.\n"
              "Examples:\n"
              "  orvan doctor -q Office\n"
              "  orvan doctor --json | jq -r '.stations[] | select(.state == \"problem\").mend'",
    .run = examineFor,
};

} // namespace orvan
