// "orvan doctor": the whole way from the scheduler to the tab, station by station.
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/Doctor/DesktopStations.h"
#include "Orvan/Doctor/QueueCheckup.h"
#include "Orvan/Interruption.h"
#include "Orvan/PrinterQuery.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace orvan {
namespace {

struct DoctorArguments {
    std::string queue; // "": every queue of an Orvan printer
    std::chrono::duration<double> timeout{};
    bool json = false;
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
    case Kind::refuses:
        break;
    }
    return "Look at its error log.";
}

Finding examineScheduler(const DoctorArguments& arguments, Patients& patients) {
    platform::Failure error;
    SchedulerProblem trouble;
    const auto time = SchedulerPatience(arguments.timeout).time();
    auto queues = listQueues(time, trouble);
    if (!queues) return problem(trouble.text, adviceFor(trouble.kind));
    patients.queues = *std::move(queues);
    const std::string count = std::to_string(patients.queues.size());
    if (!arguments.queue.empty())
        patients.names = {arguments.queue};
    else if (auto names = orvanQueues(arguments.timeout, error))
        patients.names = *std::move(names);
    else
        return problem(*error, "Look at its error log.");
    return ok(schedulerName() + " answers; it has " + count + (count == "1" ? " queue" : " queues"));
}

std::optional<SchedulerQueue> queueOf(const Patients& patients, const std::string& name) {
    const auto found = std::ranges::find(patients.queues, name, &SchedulerQueue::name);
    return found != patients.queues.end() ? std::optional(*found) : std::nullopt;
}

int examine(const DoctorArguments& arguments) {
    Checkup checkup(arguments.json);
    Patients patients;
    if (checkup.look("scheduler", [&] { return examineScheduler(arguments, patients); }) &&
        patients.names.empty())
        checkup.look("queue", [] {
            return problem("there is no queue of an Orvan printer",
                "Add one in the system's printer settings, with the driver Orvan 4500.");
        });
    for (const std::string& name : patients.names) {
        if (wasInterrupted()) break;
        checkup.setQueue(name);
        QueueCheckup(name, queueOf(patients, name), arguments.timeout, checkup).run();
    }
    if (wasInterrupted()) return cannot("interrupted; not everything was looked at");
    examineDesktop(checkup);
    checkup.end();
    return checkup.allIsWell() ? kDone : kNotDone;
}

int examineFor(const Arguments& arguments) {
    return examine({.queue = arguments.text("--queue"),
        .timeout = timeoutIn(arguments),
        .json = arguments.has("--json")});
}

constexpr ArgumentSpec kDoctorArguments[]{
    {.name = kQueueOption.name,
        .text = "A queue of the print scheduler; without it, every queue of an Orvan printer",
        .value = kQueueOption.value},
    kServerOption,
    kTimeoutOption,
    kJSONFlag,
};

} // namespace

const Command kDoctorCommand{
    .name = "doctor",
    .text = "Find out what keeps the paper options or a printer's status away",
    .arguments = kDoctorArguments,
    .footer = "One line a station: ok, problem or not checked, what was found, and how to mend it.\n"
              "The exit code is 0 when no station has a problem.\n"
              "Examples:\n"
              "  orvan doctor -q Office\n"
              "  orvan doctor --json | jq -r '.stations[] | select(.state == \"problem\").mend'",
    .run = examineFor,
};

} // namespace orvan
