#include "PrintDialog/Host/PrinterAnswers.h"

#include "Common/CommandJob.h"
#include "Formats/OneLine.h"
#include "PrintDialog/Host/StatusJobs.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace orvan {
namespace {

// In the order of the codes.
struct CodeSpec {
    const char* word;
    const char* text; // where nobody has said more
};
constexpr std::array<CodeSpec, static_cast<std::size_t>(AnswerCode::interrupted) + 1> kCodes{{
    {"", ""},
    {"scheduler-not-there", "the print scheduler is not there"},
    {"scheduler-forbidden", "the print scheduler's socket may not be opened"},
    {"scheduler-silent", "the print scheduler does not answer"},
    {"scheduler-wants-password", "the print scheduler wants a password"},
    {"scheduler-refuses", "the print scheduler refuses"},
    {"no-such-queue", "there is no such queue"},
    {"several-printers", "the queue is not one printer"},
    {"queue-rejects-jobs", "the queue rejects jobs"},
    {"not-permitted", "this user may not use the queue"},
    {"no-room", "the print scheduler has no room for a job; its disk may be full"},
    {"queue-paused", "the queue is stopped"},
    {"job-held", "the queue holds new jobs"},
    {"no-commands", "the queue's PPD lists no commands (\"cupsCommands\")"},
    {"asking-forbidden", "printers are not asked here"},
    {problemWord::kNoAddress, "this queue's device has no network address"},
    {"printer-busy", "the printer is busy with another job"},
    {"no-answer-yet", "the printer has not answered yet"},
    {"job-cancelled", "its command job was cancelled"},
    {"filter-failed", "the printer's command filter failed; the scheduler's error log says why"},
    {problemWord::kOffline, "the printer is off, or not connected"},
    {problemWord::kPassword, "the printer wants a user name and a password"},
    {problemWord::kCertificate, "another certificate than the printer's"},
    {problemWord::kDocument, "what came is no status document"},
    {"filter-complains", "the printer's command filter complains"},
    {"not-decodable", "what the printer's command filter answered cannot be decoded"},
    {"no-answer", "the printer's command filter answered nothing; the scheduler's error log says why"},
    {problemWord::kAgentSilent, "the agent does not answer"},
    {problemWord::kAgentRefuses, "the agent does not say"},
    {problemWord::kAgentOff, "SNMP is switched off in the print scheduler's snmp.conf"},
    {"interrupted", "interrupted"},
}};

AnswerReason reason(AnswerCode code, std::string text = {}) {
    return {code, text.empty() ? kCodes[static_cast<std::size_t>(code)].text : std::move(text)};
}

// Of a word of the filter's; none for another word.
AnswerCode codeOf(std::string_view word) {
    const auto found = std::ranges::find(kCodes, word, &CodeSpec::word);
    return found != kCodes.end() ? static_cast<AnswerCode>(found - kCodes.begin()) : AnswerCode::none;
}

bool isSame(const StoredAnswer& answer, const std::vector<StoredAnswer>& before) {
    const auto found = std::ranges::find(before, answer.command, &StoredAnswer::command);
    return found != before.end() && found->job == answer.job && found->askedAt == answer.askedAt;
}

// What the job said in the end.
AnswerReason reasonOfEnd(const QueueJob& job) {
    if (job.state == IPP_JSTATE_CANCELED) return reason(AnswerCode::jobCancelled);
    if (job.state == IPP_JSTATE_ABORTED) return reason(AnswerCode::filterFailed);
    if (job.message.empty() || job.message.starts_with(kStatusReadMessage))
        return reason(AnswerCode::noAnswer);
    return reason(AnswerCode::filterComplains, job.message);
}

bool isStatusJob(const QueueJob& job) {
    return job.title == kStatusJobTitle;
}

} // namespace

const char* wordFor(AnswerCode code) {
    return kCodes[static_cast<std::size_t>(code)].word;
}

std::vector<std::string_view> answerWords() {
    std::vector<std::string_view> words;
    words.reserve(kCodes.size());
    for (const CodeSpec& code : kCodes)
        words.emplace_back(code.word);
    return words;
}

const char* wordFor(CommandAnswer::State state) {
    static constexpr std::array<const char*, 3> kWords{"now", "stored", "never"};
    return kWords[static_cast<std::size_t>(state)];
}

bool AnswerReason::wasNotAsked() const {
    return code > AnswerCode::none && code <= AnswerCode::noAddress;
}

std::string AnswerReason::sentence() const {
    if (isNone()) return {};
    return (wasNotAsked() ? "not asked: " : "no answer: ") + text;
}

std::string AnswerReason::brief() const {
    // Of these the code says too little.
    static constexpr std::array<AnswerCode, 3> kOpen{
        AnswerCode::schedulerRefuses, AnswerCode::filterComplains, AnswerCode::askingForbidden};
    const bool isOpen = std::ranges::find(kOpen, code) != kOpen.end();
    return platform::onOneLine((isOpen ? *this : reason(code)).sentence());
}

AnswerReason reasonOf(const SchedulerProblem& problem) {
    using Kind = SchedulerProblem::Kind;
    // In the order of the kinds.
    static constexpr std::array<AnswerCode, static_cast<std::size_t>(Kind::refuses) + 1> kCodesOfKinds{
        AnswerCode::none, AnswerCode::schedulerNotThere, AnswerCode::schedulerForbidden,
        AnswerCode::schedulerSilent, AnswerCode::schedulerWantsPassword, AnswerCode::noSuchQueue,
        AnswerCode::severalPrinters, AnswerCode::queueRejectsJobs, AnswerCode::notPermitted,
        AnswerCode::noRoom, AnswerCode::schedulerRefuses};
    // Of these the scheduler has words that say less.
    const bool saysLess = problem.kind == Kind::rejectsJobs || problem.kind == Kind::noRoom;
    return reason(kCodesOfKinds[static_cast<std::size_t>(problem.kind)], saysLess ? "" : problem.text);
}

AnswerReason reasonOf(const SchedulerPrinter& printer, bool isOver) {
    if (AnswerReason refused = reasonOf(printer.refusal()); !refused.isNone()) return refused;
    if (isOver) {
        const auto& ended = printer.endedJobs();
        const auto job = std::ranges::find_if(ended.rbegin(), ended.rend(), isStatusJob);
        return job != ended.rend() ? reasonOfEnd(*job) : reason(AnswerCode::noAnswer);
    }
    if (printer.queue().isPaused) return reason(AnswerCode::queuePaused);
    const auto job = statusJobIn(printer.activeJobs());
    if (job && job->state == IPP_JSTATE_HELD)
        return reason(AnswerCode::jobHeld, job->id == printer.submittedJob() ? "" : describe(*job));
    if (job && job->state == IPP_JSTATE_STOPPED)
        return reason(AnswerCode::filterFailed, job->id == printer.submittedJob() ? "" : describe(*job));
    return reason(printer.queue().isPrinting ? AnswerCode::printerBusy : AnswerCode::noAnswerYet);
}

std::vector<CommandAnswer> commandAnswers(
    const AnswersToQuestion& answers, const SchedulerPrinter& printer, const AnswerReason& why) {
    const auto carried = [&](int job) {
        return job != 0 && (job == answers.sharedJob || job == printer.submittedJob());
    };
    std::vector<CommandAnswer> result;
    for (const StoredAnswer& stored : answers.after ? *answers.after : answers.before) {
        CommandAnswer& answer =
            result.emplace_back(CommandAnswer{.command = stored.command, .list = stored.list});
        const bool isNew = answers.after && stored.job != 0 &&
                           (!isSame(stored, answers.before) || stored.job == answers.sharedJob);
        using State = CommandAnswer::State;
        answer.state = !stored.list ? State::never : isNew ? State::now : State::stored;
        if (stored.list) answer.askedAt = stored.askedAt;
        if (answer.state == State::now) continue;
        const AnswerCode told = carried(stored.failedJob) ? codeOf(stored.failure) : AnswerCode::none;
        const bool saidMore = why.code == AnswerCode::filterComplains && !AnswerReason{told}.isRemark();
        if (told != AnswerCode::none)
            answer.reason = reason(told, saidMore ? why.text : "");
        else
            answer.reason = stored.isDamaged && answers.after ? reason(AnswerCode::notDecodable) : why;
    }
    return result;
}

std::string timeText(std::chrono::system_clock::time_point time) {
    const std::time_t then = std::chrono::system_clock::to_time_t(time);
    const std::time_t now = std::time(nullptr);
    std::tm day{};
    std::tm today{};
    localtime_r(&then, &day);
    localtime_r(&now, &today);
    const bool isToday = day.tm_yday == today.tm_yday && day.tm_year == today.tm_year;
    std::array<char, 64> text{};
    const std::size_t size = std::strftime(text.data(), text.size(), isToday ? "%H:%M" : "%x %H:%M", &day);
    return {text.data(), size};
}

} // namespace orvan
