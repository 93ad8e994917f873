// "orvan doctor": the whole way from the scheduler to the tab, station by station.
#include "Tools/Orvan/CommonOptions.h"
#include "Tools/Orvan/Doctor/DesktopStations.h"
#include "Tools/Orvan/Doctor/QueueCheckup.h"
#include "Tools/Orvan/Interruption.h"
#include "Tools/Orvan/PrinterQuery.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace orvan {
namespace {

struct DoctorArguments {
    std::string queue; // "": every queue of an Orvan printer
    double timeout = kDefaultTimeout;
    bool json = false;
};

// The queues to look at, with what the scheduler says of them.
struct Patients {
    std::vector<std::string> names;
    std::vector<SchedulerQueue> queues; // all of the scheduler's
};

Finding examineScheduler(const DoctorArguments& arguments, Patients& patients) {
    std::string error;
    auto queues = listQueues(SchedulerPatience::kAll, &error);
    if (!queues) return problem(error, "\"systemctl start cups\" starts this computer's.");
    patients.queues = *std::move(queues);
    const std::string count = std::to_string(patients.queues.size());
    if (!arguments.queue.empty())
        patients.names = {arguments.queue};
    else if (auto names = orvanQueues(&error))
        patients.names = *std::move(names);
    else
        return problem(error, "Look at its error log.");
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
        QueueCheckup(name, queueOf(patients, name), std::chrono::duration<double>(arguments.timeout), checkup)
            .run();
    }
    if (wasInterrupted()) return cannot("interrupted; not everything was looked at");
    examineDesktop(checkup);
    checkup.end();
    return checkup.allIsWell() ? kDone : kNotDone;
}

} // namespace

void addDoctorCommand(CLI::App& program, CommandBody& run) {
    const auto arguments = std::make_shared<DoctorArguments>();
    CLI::App* command =
        program.add_subcommand("doctor", "Find out what keeps the paper options or a printer's status away");
    addQueueOption(command, arguments->queue)
        ->description("A queue of the print scheduler; without it, every queue of an Orvan printer");
    addServerOption(command);
    addTimeoutOption(command, arguments->timeout);
    addJSONFlag(command, arguments->json);
    command->footer("One line a station: ok, problem or not checked, what was found, and how to mend it.\n"
                    "The exit code is 0 when no station has a problem.\n"
                    "Examples:\n"
                    "  orvan doctor -q Office\n"
                    "  orvan doctor --json | jq -r '.stations[] | select(.state == \"problem\").mend'");
    command->callback([arguments, &run] { run = [arguments] { return examine(*arguments); }; });

    // Not for people: how "module" is looked at.
    struct Objects {
        std::string module;
        std::string host;
    };
    const auto objects = std::make_shared<Objects>();
    CLI::App* open = program.add_subcommand(kOpenModuleCommand)->group("");
    open->add_option("MODULE", objects->module)->required();
    open->add_option("HOST", objects->host)->required();
    open->callback(
        [objects, &run] { run = [objects] { return openModule(objects->module, objects->host); }; });
}

} // namespace orvan
