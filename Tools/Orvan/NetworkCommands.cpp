// "orvan url" and "orvan ping": where a printer is, and whether it is there.
#include "Common/SimplePing.h"
#include "Common/Utilities/HostContact.h"
#include "Common/Utilities/PrinterURL.h"
#include "Common/Utilities/URIParts.h"
#include "PrintDialog/Host/Scheduler.h"
#include "Tools/Orvan/CommonOptions.h"
#include "Tools/Orvan/OutputGuard.h"
#include "Tools/Orvan/SchedulerPatience.h"
#include "Tools/Orvan/Terminal.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;

struct URLArguments {
    std::string queue;
    std::string deviceURI;
    bool json = false;
};

// The queue's device; nothing, and why, when the scheduler does not tell.
std::optional<std::string> deviceOf(const std::string& queue, std::string* problem) {
    const auto queues = listQueues(SchedulerPatience::kAll, problem);
    if (!queues) return std::nullopt;
    const auto found = std::ranges::find(*queues, queue, &SchedulerQueue::name);
    if (found != queues->end() && !found->deviceURI.empty()) return found->deviceURI;
    *problem = found == queues->end() ? "there is no printer " + queue + " (\"lpstat -v\" lists the printers)"
                                      : "the scheduler does not tell the device of printer " + queue;
    return std::nullopt;
}

std::optional<std::string> lookUp(const std::string& device) {
    const OutputGuard guard; // from what discovery says of damaged replies
    ProgressLine line;
    line.show("Looking for the printer");
    return printerURLForDeviceURI(device);
}

int showURL(const URLArguments& arguments) {
    std::string problem;
    const std::optional<std::string> device =
        arguments.queue.empty() ? arguments.deviceURI : deviceOf(arguments.queue, &problem);
    if (!device) return cannot(problem);
    const std::optional<std::string> url = lookUp(*device);
    if (!url)
        return cannot("the device " + (arguments.queue.empty() ? *device : "of printer " + arguments.queue) +
                      " has no host on the network, or is a discovered printer that does not answer now");
    if (arguments.json)
        std::cout << Json{{"schemaVersion", 1}, {"url", *url}} << '\n';
    else
        std::cout << *url << '\n';
    return kDone;
}

struct PingArguments {
    std::string host;
    int count = 1;
    int timeout = 200; // milliseconds
    bool json = false;
};

int ping(const PingArguments& arguments) {
    const bool isURL = arguments.host.find("://") != std::string::npos;
    const std::optional<URIParts> parts = isURL ? separateURI(arguments.host) : std::nullopt;
    if (isURL && !parts) return cannot(arguments.host + " has no host");
    const std::string host = isURL ? parts->host : arguments.host;
    ProgressLine line;
    line.show("Waiting for " + host);
    const int result = SimplePing(host.c_str(), arguments.count, arguments.timeout, false);
    line.show({});
    const std::string problem = explainPing(result, host);
    if (arguments.json)
        std::cout << Json{{"schemaVersion", 1}, {"host", host}, {"reachable", result == 0},
                         {"problem", problem}}
                  << '\n';
    else if (result == 0)
        std::cout << host << " is reachable\n";
    return result == 0 ? kDone : cannot(problem);
}

} // namespace

void addURLCommand(CLI::App& program, CommandBody& run) {
    const auto arguments = std::make_shared<URLArguments>();
    CLI::App* command = program.add_subcommand("url", "Find the address of a printer's web server");
    CLI::Option_group* const printer = command->add_option_group("printer");
    addQueueOption(printer, arguments->queue);
    printer->add_option("--device-uri", arguments->deviceURI, "A queue's device")->type_name("URI");
    printer->require_option(1);
    addServerOption(command);
    addJSONFlag(command, arguments->json);
    command->footer("A discovered printer (dnssd:) is looked for on the local network.\n"
                    "Examples:\n"
                    "  orvan url -q Office\n"
                    "  orvan url --device-uri \"$(lpstat -v Office | sed 's/.*: //')\"");
    command->callback([arguments, &run] { run = [arguments] { return showURL(*arguments); }; });
}

void addPingCommand(CLI::App& program, CommandBody& run) {
    const auto arguments = std::make_shared<PingArguments>();
    CLI::App* command = program.add_subcommand("ping", "Find out whether a host answers");
    command->add_option("HOST", arguments->host, "A name, an IPv4 address, or a URL with one of these")
        ->required();
    command->add_option("-c,--count", arguments->count, "How many replies there have to be (default 1)")
        ->type_name("COUNT")
        ->check(checkPositive);
    command
        ->add_option("-t,--timeout", arguments->timeout,
            "How long to listen after each reply (default 200, at most 1000)")
        ->type_name("MILLISECONDS")
        ->check(checkPositive);
    addJSONFlag(command, arguments->json);
    command->footer("A host that does not answer within a second is not reachable.\n"
                    "Examples:\n"
                    "  orvan ping printer.example -c 3\n"
                    "  orvan ping \"$(orvan url -q Office)\"");
    command->callback([arguments, &run] { run = [arguments] { return ping(*arguments); }; });
}

} // namespace orvan
