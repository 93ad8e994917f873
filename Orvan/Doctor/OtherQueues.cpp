#include "Orvan/Doctor/OtherQueues.h"

#include "Common/Utilities/URIParts.h"

#include <strings.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace orvan {
namespace {

bool isOfPrintServer(const URIParts& device) {
    return device.resource.starts_with("/printers/") || device.resource.starts_with("/classes/");
}

// The back end's options are behind the path.
std::string pathOf(const URIParts& device) {
    const std::string path = device.resource.substr(0, device.resource.find('?'));
    return path.empty() ? "/" : path;
}

// Of a discovered printer its name, whatever the service.
std::string hostOf(const URIParts& device) {
    return device.scheme == "dnssd" ? device.host.substr(0, device.host.find("._")) : device.host;
}

} // namespace

bool isSamePrinter(const std::string& device, const std::string& other) {
    const std::optional<URIParts> one = separateURI(device);
    const std::optional<URIParts> two = separateURI(other);
    if (!one || !two || isOfPrintServer(*one) || isOfPrintServer(*two)) return false;
    if ((one->scheme == "dnssd") != (two->scheme == "dnssd")) return false;
    if (strcasecmp(hostOf(*one).c_str(), hostOf(*two).c_str()) != 0) return false;
    return one->scheme != two->scheme || one->scheme == "dnssd" ||
           (one->port == two->port && pathOf(*one) == pathOf(*two));
}

std::vector<SchedulerQueue> queuesOfSamePrinter(
    const SchedulerQueue& queue, const std::vector<SchedulerQueue>& all) {
    std::vector<SchedulerQueue> others;
    std::ranges::copy_if(all, std::back_inserter(others), [&queue](const SchedulerQueue& other) {
        return other.name != queue.name && other.isOnePrinter() &&
               isSamePrinter(queue.deviceURI, other.deviceURI);
    });
    return others;
}

} // namespace orvan
