// The stations behind the queue: where the printer is, and what it answers when it is asked from here.
#include "BiDi/Common/StoredPassword.h"
#include "CommandFilter/Program/StatusQuery.h"
#include "Common/Utilities/HostContact.h"
#include "Common/Utilities/URIParts.h"
#include "Orvan/DiscoveryMessages.h"
#include "Orvan/Doctor/QueueCheckup.h"
#include "Platform/UserDefaults.h"

#include <array>
#include <string_view>

namespace orvan {
namespace {

constexpr const char* kNeedsAddress = "there has to be an address first";

// As a command job would carry them.
Credentials storedCredentials() {
    const std::string password = storedPassword();
    return password.empty() ? Credentials{} : Credentials{platform::fullUserName(), password};
}

// "4 trays, 4 supplies, 5 custom papers".
std::string contentsOf(const Ticket& ticket) {
    struct Part {
        std::string_view key;
        const char* name;
    };
    static constexpr std::array<Part, 4> kParts{
        {{OVCPSSInputTrays, "trays"}, {OVCPSSColorantHousing, "supplies"},
            {OVOVGCustomPaperTypes, "custom papers"}, {kSavedJobs, "stored jobs"}}};
    std::string text;
    for (const auto& [key, name] : kParts) {
        const auto found = ticket.find(key);
        const auto* const list = found != ticket.end() ? found->second.asList() : nullptr;
        if (list != nullptr) text += (text.empty() ? "" : ", ") + std::to_string(list->size()) + " " + name;
    }
    return text.empty() ? "no trays, supplies, papers and jobs" : text;
}

} // namespace

Finding QueueCheckup::examineAddress() {
    const DiscoveryMessages messages;
    AddressSearch search = findPrinterAddress(queue_->deviceURI, ppd_->record());
    address_ = std::move(search.address);
    if (!address_) return problem("the device " + queue_->deviceURI + " leads to no printer", search.problem);
    return ok("the status document is at " + address_->shownURL);
}

Finding QueueCheckup::examineContact() {
    const std::optional<URIParts> url = address_ ? separateURI(address_->documentURL) : std::nullopt;
    if (!url) return notChecked(kNeedsAddress);
    const HostContact contact = contactHost(url->host, url->port);
    isThere_ = contact.isThere;
    if (!contact.isThere)
        return problem(url->host + " is not there: " + contact.problem,
            "Switch the printer on, connect it, and compare the address with the one on its panel.");
    if (contact.pingProblem.empty()) return ok(url->host + " replies");
    // A firewall that drops requests leaves no reply; who may not ask has asked nothing.
    const std::string connects = url->host + " takes connections at port " + std::to_string(url->port) + "; ";
    return contact.pingResult == -1 ? ok(connects + "it does not reply to echo requests")
                                    : notChecked(connects + contact.pingProblem);
}

Finding QueueCheckup::examineDocument() const {
    if (!address_) return notChecked(kNeedsAddress);
    if (!isThere_) return notChecked("the printer has to be there first");
    const StatusAnswer answer = askForDocument(*address_, storedCredentials());
    if (answer.isOther) return problem("the printer shows another certificate than before", answer.problem);
    if (!answer.ticket) return problem("the printer gives no status document", answer.problem);
    return ok("fetched and read: " + contentsOf(*answer.ticket));
}

} // namespace orvan
