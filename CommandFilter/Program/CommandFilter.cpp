#include "CommandFilter/Program/CommandFilter.h"

#include "BiDi/ppdx.h"
#include "CommandFilter/Program/CommandFile.h"
#include "CommandFilter/Program/FilterMessages.h"
#include "CommandFilter/Program/PrinterLevels.h"
#include "CommandFilter/Program/StatusQuery.h"
#include "Common/CommandJob.h"
#include "Common/DNSMessage.h"
#include "Platform/LogLimit.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <vector>

namespace orvan {
namespace {

enum class Source {
    document,   // the status document; answered in chunks
    accounting, // the SNMP agent; answered in chunks
    levels,     // the status document; told to the scheduler
};

// A command, and the keys of the ticket that answer it.
struct CommandSpec {
    const char* name;
    Source source;
    std::array<std::string_view, 2> keys;
};
constexpr std::array<CommandSpec, 7> kCommands{{
    {"com.orvan.CustomPaperTypes", Source::document, {OVOVGCustomPaperTypes}},
    {"com.orvan.DeviceStatus", Source::document, {OVCPSSInputTrays, OVCPSSColorantHousing}},
    {"com.orvan.StoredJobs", Source::document, {kSavedJobs}},
    {"com.orvan.ColorModes", Source::document, {kColorModes}},
    {"com.orvan.Permissions", Source::document, {kColorPermissions}},
    {"com.orvan.JobAccounting", Source::accounting, {OVSNMPJobAccountingOID}},
    {"ReportLevels", Source::levels, {}},
}};

// What CUPS's own commands do not tell apart either: capitals.
const CommandSpec* findCommand(const std::string& name) {
    const auto found = std::ranges::find_if(
        kCommands, [&](const CommandSpec& spec) { return strcasecmp(spec.name, name.c_str()) == 0; });
    return found != kCommands.end() ? &*found : nullptr;
}

struct ClosePPD {
    void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};

using Commands = std::vector<const CommandSpec*>;

Commands knownCommands(const CommandFile& file) {
    Commands commands;
    platform::LogLimit skipped(tellWarning);
    for (const std::string& name : file.commands) {
        const CommandSpec* const command = findCommand(name);
        if (command == nullptr)
            skipped.write("The command " + name + " is not known to this printer and was skipped.");
        else if (std::ranges::find(commands, command) == commands.end())
            commands.push_back(command);
    }
    return commands;
}

// The end of a PPD keyword behind "CustomType".
bool isKeywordsEnd(std::string_view text) {
    constexpr std::size_t kMostLetters = 40 - std::string_view("CustomType").size();
    return !text.empty() && text.size() <= kMostLetters &&
           text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_") ==
               std::string_view::npos;
}

// The custom papers, without types that make no keyword: a dialog then leaves them as the PPD has them.
void dropUnusableTypes(platform::PropertyList& papers) {
    platform::PropertyList::List* const list = papers.asList();
    if (list == nullptr) return;
    platform::LogLimit dropped(tellWarning);
    for (platform::PropertyList& paper : *list) {
        const std::string* const type = paper.findString("type");
        if (type == nullptr || isKeywordsEnd(*type)) continue;
        dropped.write(
            "The type \"" + *type + "\" of a custom paper is left out: it makes no keyword of a PPD.");
        paper.asDictionary()->erase("type");
    }
}

// With the time at which the printer was asked.
void answerInChunks(const CommandSpec& command, const Ticket& ticket, std::time_t askedAt) {
    Ticket part;
    for (const std::string_view key : command.keys)
        if (const auto found = ticket.find(key); found != ticket.end()) part.insert(*found);
    if (const auto papers = part.find(OVOVGCustomPaperTypes); papers != part.end())
        dropUnusableTypes(papers->second);
    const std::string list = platform::PropertyList(std::move(part)).writeXML();
    ppdxWriteData(command.name, list.data(), list.size());
    tellPPD(std::string(command.name) + kAnswerTime, std::to_string(askedAt));
}

void reportLevels(const Ticket& ticket) {
    const PrinterLevels levels = levelsIn(ticket);
    if (!levels.attributes.empty()) tellAttributes(levels.attributes);
    tellState('+', levels.reasonsThatHold);
    tellState('-', levels.reasonsThatAreOver);
}

bool wantsDocument(const CommandSpec* command) {
    return command->source != Source::accounting;
}

// True when there is nothing to complain of.
bool answerFromDocument(
    const Commands& commands, const PrinterAddress& address, const CommandFile& file, bool* isOffline) {
    if (std::ranges::none_of(commands, wantsDocument)) return true;
    const std::time_t askedAt = std::time(nullptr);
    const StatusAnswer answer = askForDocument(address, {file.user, file.password});
    std::ranges::for_each(answer.trace, tellDebug);
    *isOffline = answer.isOffline;
    tellState(answer.isOffline ? '+' : '-', "offline-report");
    if (!answer.ticket) {
        tellError(answer.problem);
        return false;
    }
    for (const CommandSpec* command : commands) {
        if (command->source == Source::document) answerInChunks(*command, *answer.ticket, askedAt);
        if (command->source == Source::levels) reportLevels(*answer.ticket);
    }
    return true;
}

bool answerFromAgent(const Commands& commands, const PrinterAddress& address, const std::string& serverRoot,
    bool alreadyComplained) {
    const auto command = std::ranges::find_if_not(commands, wantsDocument);
    if (command == commands.end()) return true;
    const std::time_t askedAt = std::time(nullptr);
    const StatusAnswer answer = askForAccounting(address, serverRoot);
    if (answer.ticket) {
        answerInChunks(**command, *answer.ticket, askedAt);
        return true;
    }
    // One printer, one complaint.
    if (alreadyComplained)
        tellDebug(answer.problem);
    else
        tellError(answer.problem);
    return false;
}

// What discovery says of damaged replies is for the scheduler's log.
AddressSearch findAddress(const FilterCall& call, ppd_file_t* ppd) {
    platform::LogLimit log(tellDebug);
    const DNSMessages messages([&log](const std::string& message) { log.write(message); });
    return findPrinterAddress(call.deviceURI, ppd);
}

} // namespace

void runCommandFilter(const FilterCall& call) {
    const std::optional<CommandFile> file = readCommandFile(call.job);
    if (!file) return tellError("The job is no CUPS command file; nothing was asked.");
    const Commands commands = knownCommands(*file);
    if (commands.empty()) return;

    const std::unique_ptr<ppd_file_t, ClosePPD> ppd(
        call.ppdFile.empty() ? nullptr : ppdOpenFile(call.ppdFile.c_str()));
    const auto [address, problem, isNotOnNetwork] = findAddress(call, ppd.get());
    if (isNotOnNetwork) return tellDebug("this queue's device has no network address");
    if (!address) return tellError(problem);

    tellInfo("Asking the printer at " + address->shownURL + " for its status.");
    bool isOffline = false;
    const bool documentDone = answerFromDocument(commands, *address, *file, &isOffline);
    // Who does not answer the one question does not answer the other.
    if (isOffline) return;
    const bool agentDone = answerFromAgent(commands, *address, call.serverRoot, !documentDone);
    if (documentDone && agentDone) tellInfo(kStatusReadMessage);
}

} // namespace orvan
