#include "Tests/Support/CommandQueue.h"

#include <algorithm>

namespace orvan {

void replace(std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
}

void CommandQueue::SetUp() {
    if (SchedulerProcess::findProgram().empty()) GTEST_SKIP() << "cupsd is not installed";
    PrintingSystemOptions options;
    options.folder = folderOptions();
    Failure failure;
    system_ = PrintingSystem::start(options, &failure);
    ASSERT_TRUE(system_) << failure.value_or("");
}

SchedulerFolderOptions CommandQueue::folderOptions() const {
    SchedulerFolderOptions options;
    options.extraFilters = {ORVAN_COMMAND_FILTER};
    return options;
}

std::string CommandQueue::queuePPD(
    const std::string& filter, const std::string& url, const std::string& agent) {
    std::string ppd = contents(ORVAN_DRIVER_PPD);
    replace(ppd, "/usr/lib/cups/filter/commandtoorvan", filter);
    replace(ppd, "\"/status.xml\"", '"' + url + "\"\n*OVNSNMPAgent: \"" + agent + '"');
    return ppd;
}

void CommandQueue::addQueue(const std::string& name, const std::string& filter, const std::string& url,
    const std::string& agent) const {
    const TempFolder folder;
    const auto file = folder.write("queue.ppd", queuePPD(filter, url, agent));
    ASSERT_EQ(system_->addQueue({.name = name, .ppdFile = file}), std::nullopt);
}

void CommandQueue::addGatedQueue(const std::string& name, const SimulatedPrinter& printer) const {
    const std::string filter =
        gate_.write("filter", "#!/bin/sh\nwhile [ -e " + (gate_.path() / "shut").string() +
                                  " ]; do sleep 0.05; done\n" + "exec " ORVAN_COMMAND_FILTER " \"$@\"\n");
    // Where the scheduler's user can read.
    std::filesystem::permissions(gate_.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(filter, std::filesystem::perms(0755));
    addQueue(name, filter, printer.url(), printer.snmpAgent());
}

Environment CommandQueue::environment() const {
    const ClientEnvironment client = system_->environment();
    Environment environment(client.begin(), client.end());
    environment.insert({{"LC_ALL", "C.UTF-8"}, {"LANGUAGE", ""}, {"ORVAN_SYSTEM_RELEASE", std::nullopt}});
    return environment;
}

ProgramEnd CommandQueue::run(const std::vector<std::string>& command, const Environment& more) const {
    Environment all = more;
    all.merge(environment());
    return runProgram(command, all);
}

ProgramEnd CommandQueue::orvan(std::vector<std::string> arguments, const Environment& more) const {
    const std::vector<std::string> asking{"doctor", "panel", "papers", "status"};
    const bool isTimed = std::ranges::find(arguments, "--timeout") != arguments.end();
    if (!arguments.empty() && !isTimed && std::ranges::binary_search(asking, arguments.front()))
        arguments.insert(arguments.begin() + 1, {"--timeout", "100"});
    arguments.insert(arguments.begin(), ORVAN_PROGRAM);
    return run(arguments, more);
}

} // namespace orvan
