// The stations behind the queue: where the printer is, and what it answers when it is asked from here.
#include "BiDi/Common/StoredPassword.h"
#include "CommandFilter/Program/StatusQuery.h"
#include "Common/CommandJob.h"
#include "Common/Utilities/HostContact.h"
#include "Common/Utilities/URIParts.h"
#include "Orvan/DiscoveryMessages.h"
#include "Orvan/Doctor/QueueCheckup.h"
#include "Platform/UserDefaults.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

namespace orvan {
namespace {

constexpr const char* kNeedsAddress = "there has to be an address first";

// As a command job would carry them. `unusable` says why a password that is there is not among them.
Credentials storedCredentials(platform::Failure& unusable) {
    const std::string password = storedPassword(unusable);
    return password.empty() ? Credentials{} : Credentials{platform::fullUserName(), password};
}

// The value of a back end's option; nothing without it. They stand behind "?", with "&" or "+" between them.
std::optional<std::string> backEndOption(const std::string& resource, const char* name) {
    std::optional<std::string> value;
    std::size_t at = resource.find('?');
    while (at != std::string::npos) {
        const std::size_t end = resource.find_first_of("&+", at + 1);
        const std::string option = resource.substr(at + 1, end - at - 1);
        const std::size_t equals = std::min(option.find('='), option.size());
        if (strcasecmp(option.substr(0, equals).c_str(), name) == 0)
            value = option.substr(std::min(equals + 1, option.size()));
        at = end;
    }
    return value;
}

bool isOneOfWords(const char* word, std::initializer_list<const char*> words) {
    return std::ranges::any_of(words, [word](const char* one) { return strcasecmp(one, word) == 0; });
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

std::string withoutSupplies(const std::string& deviceURI) {
    const bool hasOptions = deviceURI.find('?') != std::string::npos;
    const bool hasPath = deviceURI.find('/', deviceURI.find("//") + 2) != std::string::npos;
    return deviceURI + (hasOptions ? "&" : hasPath ? "?" : "/?") + "snmp=false";
}

} // namespace

// The back ends "socket" and "lpd" ask an agent that they wait for, two seconds twice, how full the supplies
// are, unless the device's option "snmp" or the PPD's "cupsSNMPSupplies" says no.
std::optional<Finding> QueueCheckup::examineWaitForAgent() const {
    const std::optional<URIParts> device = separateURI(queue_->deviceURI);
    if (!isAgentSilent_ || !device || !isOneOfWords(device->scheme.c_str(), {"socket", "lpd"}))
        return std::nullopt;
    // Another agent that the PPD names says nothing of the device's.
    constexpr int kAgentPort = 161; // RFC 3417, section 3.1
    if (address_->snmpHost != device->host || address_->snmpPort != kAgentPort) return std::nullopt;
    const std::string wish = backEndOption(device->resource, "snmp").value_or("");
    const ppd_attr_t* const supplies = ppdFindAttr(ppd_->record(), "cupsSNMPSupplies", nullptr);
    const bool asks =
        isOneOfWords(wish.c_str(), {"", "on", "yes", "true"}) &&
        (supplies == nullptr || supplies->value == nullptr || isOneOfWords(supplies->value, {"true"}));
    if (!asks) return std::nullopt;
    return problem("each job waits four seconds for the printer's SNMP agent, which does not answer",
        "\"lpadmin -p " + name_ + " -v '" + withoutSupplies(queue_->deviceURI) + "'\" ends that.");
}

Finding QueueCheckup::examineAddress() {
    const DiscoveryMessages messages;
    AddressSearch search = findPrinterAddress(queue_->deviceURI, ppd_->record());
    address_ = std::move(search.address);
    if (!address_)
        return problem("the device " + queue_->deviceURI + " and the PPD lead to no printer", search.problem);
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
    platform::Failure unusable;
    const StatusAnswer answer = askForDocument(*address_, storedCredentials(unusable));
    if (unusable && answer.problemWord == problemWord::kPassword)
        return notChecked("the printer wants a password; the stored one has to be right first");
    if (answer.isOther) return problem("the printer shows another certificate than before", answer.problem);
    if (!answer.ticket) return problem("the printer gives no status document", answer.problem);
    return ok("fetched and read: " + contentsOf(*answer.ticket));
}

} // namespace orvan
