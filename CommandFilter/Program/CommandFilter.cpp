#include "CommandFilter/Program/CommandFilter.h"

#include "BiDi/ppdx.h"
#include "CommandFilter/Commands.h"
#include "CommandFilter/Program/CommandFile.h"
#include "CommandFilter/Program/FilterMessages.h"
#include "CommandFilter/Program/PrinterLevels.h"
#include "CommandFilter/Program/StatusQuery.h"
#include "Common/CommandJob.h"
#include "Common/DNSMessage.h"
#include "Platform/LogLimit.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <future>
#include <memory>
#include <utility>
#include <vector>

namespace orvan {
namespace {

// The attribute of the queue's PPD that says whether the scheduler has been told of supplies.
constexpr const char* kMarkersTold = "OVNMarkersTold";
constexpr const char* kYes = "1";
constexpr const char* kNo = "0";

struct ClosePPD {
    void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};

using Source = CommandSpec::Source;
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

// What the scheduler was told of supplies stays until it is told something else.
void reportLevels(const Ticket& ticket, ppd_file_t* ppd) {
    const PrinterLevels levels = levelsIn(ticket);
    const ppd_attr_t* const told = ppd != nullptr ? ppdFindAttr(ppd, kMarkersTold, nullptr) : nullptr;
    const bool wereTold = told != nullptr && told->value != nullptr && *told->value == *kYes;
    const bool areTold = !levels.attributes.empty();
    if (areTold || wereTold) tellAttributes(areTold ? levels.attributes : kNoMarkers);
    if (areTold != wereTold) tellPPD(kMarkersTold, areTold ? kYes : kNo);
    tellState('+', levels.reasonsThatHold);
    tellState('-', levels.reasonsThatAreOver);
}

// The commands that one question to the printer answers.
class Answering {
public:
    Answering(const FilterCall& call, Commands commands, ppd_file_t* ppd)
        : call_(call), commands_(std::move(commands)), ppd_(ppd) {}

    // Whether there is anything to ask.
    bool isWanted() const { return !commands_.empty(); }

    // What came: the ticket's part for each, or the word for why there is none, for whoever reads the earlier
    // answers.
    void tell(const StatusAnswer& answer) const {
        for (const CommandSpec* command : commands_) {
            if (!answer.ticket)
                explain(*command, answer.problemWord);
            else if (command->source == Source::levels)
                reportLevels(*answer.ticket, ppd_);
            else
                answerInChunks(*command, *answer.ticket);
        }
    }

private:
    void explain(const CommandSpec& command, const std::string& word) const {
        if (call_.jobNumber.empty() || command.source == Source::levels) return;
        tellPPD(std::string(command.name) + kAnswerProblem, call_.jobNumber + ':' + word);
    }

    void answerInChunks(const CommandSpec& command, const Ticket& ticket) const {
        Ticket part;
        for (const std::string_view key : command.keys)
            if (const auto found = ticket.find(key); found != ticket.end()) part.insert(*found);
        if (const auto papers = part.find(OVOVGCustomPaperTypes); papers != part.end())
            dropUnusableTypes(papers->second);
        const std::string list = platform::PropertyList(std::move(part)).writeXML();
        const std::string name = command.name;
        std::uint32_t count = 0;
        ppdxWriteDataToDescriptor(STDERR_FILENO, command.name, list.data(), list.size(), &count);
        emptyRest(name, count);
        tellPPD(name + kAnswerTime, std::to_string(askedAt_));
        if (!call_.jobNumber.empty()) tellPPD(name + kAnswerJob, call_.jobNumber);
    }

    // The entries of an earlier answer from that number on.
    void emptyRest(const std::string& name, std::uint32_t first) const {
        if (ppd_ == nullptr) return;
        for (int i = 0; i < ppd_->num_attrs; ++i) {
            const ppd_attr_t& attribute = *ppd_->attrs[i];
            const std::string_view keyword = attribute.name;
            if (!keyword.starts_with(name) || attribute.value == nullptr || *attribute.value == '\0')
                continue;
            const std::string_view digits = keyword.substr(name.size());
            std::uint32_t number = 0;
            constexpr int kHexadecimal = 16;
            constexpr std::size_t kFewestDigits = 4;
            const char* const end = digits.data() + digits.size();
            const auto [place, error] = std::from_chars(digits.data(), end, number, kHexadecimal);
            if (digits.size() >= kFewestDigits && error == std::errc() && place == end && number >= first)
                tellPPD(std::string(keyword), R"("")");
        }
    }

    const FilterCall& call_;
    Commands commands_;
    ppd_file_t* ppd_; // null when there is none
    std::time_t askedAt_ = std::time(nullptr);
};

// What discovery says of damaged replies is for the scheduler's log.
AddressSearch findAddress(const FilterCall& call, ppd_file_t* ppd) {
    platform::LogLimit log(tellDebug);
    const DNSMessages messages([&log](const std::string& message) { log.write(message); });
    return findPrinterAddress(call.deviceURI, ppd);
}

// The PPD names the status document and the agent; without it the device alone is known.
std::string whyUnread(const std::string& file) {
    const bool mayRead = access(file.c_str(), R_OK) == 0;
    return "The queue's PPD " + file +
           " cannot be read: " + (mayRead ? "it is damaged" : std::strerror(errno)) +
           ". Let the scheduler's filters read it, or give the queue its driver again.";
}

} // namespace

void runCommandFilter(const FilterCall& call) {
    const std::optional<CommandFile> file = readCommandFile(call.job);
    if (!file) return tellError("The job is no CUPS command file; nothing was asked.");
    Commands commands = knownCommands(*file);
    if (commands.empty()) return;

    const std::unique_ptr<ppd_file_t, ClosePPD> ppd(
        call.ppdFile.empty() ? nullptr : ppdOpenFile(call.ppdFile.c_str()));
    const std::string unread = ppd == nullptr && !call.ppdFile.empty() ? whyUnread(call.ppdFile) : "";
    if (!unread.empty()) tellWarning(unread);
    const auto [address, problem, isNotOnNetwork] = findAddress(call, ppd.get());
    // Those that the SNMP agent answers come last.
    const auto accounting = std::stable_partition(commands.begin(), commands.end(),
        [](const CommandSpec* command) { return command->source != Source::accounting; });
    const Answering ofDocument(call, {commands.begin(), accounting}, ppd.get());
    const Answering ofAgent(call, {accounting, commands.end()}, ppd.get());
    if (!address) {
        StatusAnswer none;
        none.problemWord = problemWord::kNoAddress;
        ofDocument.tell(none);
        ofAgent.tell(none);
        if (!unread.empty()) return tellError(unread);
        return isNotOnNetwork ? tellDebug("this queue's device has no network address") : tellError(problem);
    }

    tellInfo("Asking the printer at " + address->shownURL + " for its status.");
    // Both at once: a printer whose agent is off keeps nobody waiting.
    std::future<StatusAnswer> agent;
    if (ofAgent.isWanted())
        agent = std::async(std::launch::async, askForAccounting, *address, call.serverRoot);
    StatusAnswer fromDocument;
    if (ofDocument.isWanted()) {
        fromDocument = askForDocument(*address, {file->user, file->password});
        std::ranges::for_each(fromDocument.trace, tellDebug);
        tellState(fromDocument.isOffline ? '+' : '-', "offline-report");
        ofDocument.tell(fromDocument);
    }
    StatusAnswer fromAgent;
    if (agent.valid()) {
        fromAgent = agent.get();
        ofAgent.tell(fromAgent);
    }

    // One printer, one complaint.
    if (!fromDocument.problem.empty()) {
        tellError(fromDocument.problem);
        if (!fromAgent.problem.empty()) tellDebug(fromAgent.problem);
    } else if (fromAgent.problem.empty()) {
        tellInfo(kStatusReadMessage);
    } else if (ofDocument.isWanted()) {
        tellInfo(std::string(kStatusReadMessage).append(" ").append(fromAgent.problem).append("."));
    } else {
        tellError(fromAgent.problem);
    }
}

} // namespace orvan
