// "orvan url" and "orvan ping": where a printer is, and whether it is there.
#include "Common/SimplePing.h"
#include "Common/Utilities/HostAddress.h"
#include "Common/Utilities/HostContact.h"
#include "Common/Utilities/PrinterURL.h"
#include "Common/Utilities/URIParts.h"
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/DiscoveryMessages.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/SchedulerPatience.h"
#include "Orvan/Terminal.h"
#include "Scheduler/PrintScheduler.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;

// The queue's device; nothing, and why, when the scheduler does not tell.
std::optional<std::string> deviceOf(const std::string& queue, platform::Failure& problem) {
    const auto queues = listQueues(SchedulerPatience::kAll, problem);
    if (!queues) return std::nullopt;
    const auto found = std::ranges::find(*queues, queue, &SchedulerQueue::name);
    if (found != queues->end() && !found->deviceURI.empty()) return found->deviceURI;
    problem = found == queues->end() ? "there is no printer " + queue + " (\"lpstat -v\" lists the printers)"
                                     : "the scheduler does not tell the device of printer " + queue;
    return std::nullopt;
}

std::optional<std::string> lookUp(const std::string& device) {
    const DiscoveryMessages messages;
    ProgressLine line;
    line.show("Looking for the printer");
    return reachableURLForDeviceURI(device);
}

int showURL(const Arguments& arguments) {
    platform::Failure problem;
    std::optional<std::string> device = arguments.optionalText("--device-uri");
    std::optional<std::string> queue;
    if (!device) {
        SchedulerProblem none;
        queue = queueIn(arguments, SchedulerPatience::kAll, none);
        if (!queue) return cannot(none.text);
        device = deviceOf(*queue, problem);
    }
    if (!device) return cannot(*problem);
    const std::optional<std::string> url = lookUp(*device);
    if (!url)
        return cannot("the device " + (queue ? "of printer " + *queue : *device) +
                      " has no host on the network, or is a discovered printer that does not answer now");
    if (arguments.has("--json"))
        std::cout << jsonText(Json{{"schemaVersion", 1}, {"url", *url}}) << '\n';
    else
        std::cout << *url << '\n';
    return kDone;
}

constexpr int kDefaultCount = 1;
constexpr int kDefaultTimeout = 200; // milliseconds

std::string checkWhole(const std::string& number) {
    const double value = numberIn(number).value_or(0);
    const bool isRight = value >= 1 && value <= std::numeric_limits<int>::max() && value == std::floor(value);
    return isRight ? "" : "\"" + number + "\" is not a whole number above 0";
}

int wholeNumber(const Arguments& arguments, std::string_view name, int otherwise) {
    return static_cast<int>(arguments.number(name).value_or(otherwise));
}

int ping(const Arguments& arguments) {
    const std::string target = arguments.text("HOST");
    const bool isURL = target.find("://") != std::string::npos;
    const std::optional<URIParts> parts = isURL ? separateURI(target) : std::nullopt;
    if (isURL && !parts) return cannot(target + " has no host");
    const std::string host = isURL ? parts->host : target;
    ProgressLine line;
    line.show("Waiting for " + host);
    const HostAddress found = findHostAddress(host);
    const std::string& asked = found.address.empty() ? host : found.address;
    // A name that nobody looks up in time has no address.
    const int result = found.problem.empty()
                           ? SimplePing(asked.c_str(), wholeNumber(arguments, "--count", kDefaultCount),
                                 wholeNumber(arguments, "--timeout", kDefaultTimeout), false)
                           : -1;
    line.show({});
    const std::string problem = found.problem.empty() ? explainPing(result, host) : found.problem;
    if (arguments.has("--json"))
        std::cout << jsonText(Json{{"schemaVersion", 1}, {"host", host}, {"reachable", result == 0},
                         {"problem", problem}})
                  << '\n';
    else if (result == 0)
        std::cout << host << " is reachable\n";
    return result == 0 ? kDone : cannot(problem);
}

constexpr ArgumentSpec kURLArguments[]{
    inGroup(kQueueOption, "printer"),
    {.name = "--device-uri", .text = "A queue's device", .value = "URI", .group = "printer"},
    kServerOption,
    kJSONFlag,
};

constexpr ArgumentSpec kPingArguments[]{
    {.name = "HOST",
        .text = "A name, an IPv4 address, or a URL with one of these",
        .count = ArgumentSpec::Count::required},
    {.name = "-c,--count",
        .text = "How many replies there have to be (default 1)",
        .value = "COUNT",
        .check = checkWhole},
    {.name = "-t,--timeout",
        .text = "How long to listen after each reply (default 200, at most 1000)",
        .value = "MILLISECONDS",
        .check = checkWhole},
    kJSONFlag,
};

} // namespace

const Command kURLCommand{
    .name = "url",
    .text = "Find the address of a printer's web server",
    .arguments = kURLArguments,
    .footer = "A discovered printer (dnssd:) is looked for on the local network.\n"
              "Examples:\n"
              "  orvan url -q Office\n"
              "  orvan url --device-uri \"$(lpstat -v Office | sed 's/.*: //')\"",
    .run = showURL,
};

const Command kPingCommand{
    .name = "ping",
    .text = "Find out whether a host answers",
    .arguments = kPingArguments,
    .footer = "A host that does not answer within a second is not reachable.\n"
              "Examples:\n"
              "  orvan ping printer.example -c 3\n"
              "  orvan ping \"$(orvan url -q Office)\"",
    .run = ping,
};

} // namespace orvan
