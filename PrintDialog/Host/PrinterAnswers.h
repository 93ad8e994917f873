// What a printer has answered, and of when that is.
//
// The one place that says whether an answer is new: the dialog's line and the commands print what is here.
#pragma once

#include "BiDi/StoredAnswers.h"
#include "Formats/PropertyList.h"
#include "Scheduler/SchedulerPrinter.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// Why an answer is not new.
enum class AnswerCode {
    none,
    // The printer was not asked.
    schedulerNotThere,
    schedulerForbidden,
    schedulerSilent,
    schedulerWantsPassword,
    schedulerRefuses,
    noSuchQueue,
    severalPrinters,
    queueRejectsJobs,
    notPermitted,
    noRoom,
    queuePaused,
    jobHeld,
    noCommands,
    askingForbidden,
    noAddress,
    // It did not answer.
    printerBusy,
    noAnswerYet,
    jobCancelled,
    filterFailed,
    printerOffline,
    passwordWanted,
    otherPrinter,
    noStatusDocument,
    filterComplains,
    notDecodable,
    noAnswer,
    agentSilent,
    agentRefuses,
    agentOff,
    interrupted,
};

// The word for a script; it stays the same. "" for none.
const char* wordFor(AnswerCode code);
// All of them, in the order of the codes.
std::vector<std::string_view> answerWords();

struct AnswerReason {
    AnswerCode code = AnswerCode::none;
    std::string text = {}; // for people, to go on behind a colon; "" for none

    bool isNone() const { return code == AnswerCode::none; }
    // Whether it says nothing against the printer: agents of SNMP are often switched off.
    bool isRemark() const { return code >= AnswerCode::agentSilent && code <= AnswerCode::agentOff; }
    // "not asked: ..." or "no answer: ..."; "" for none.
    std::string sentence() const;
    // The same on one short line, without addresses and advice.
    std::string brief() const;
    // Whether the question never got to the printer.
    bool wasNotAsked() const;
};

// The answer to one command.
struct CommandAnswer {
    enum class State {
        now,    // to this question
        stored, // to an earlier one
        never,  // there is none
    };

    std::string command; // "" for an answer of which that is not known
    State state = State::never;
    std::optional<platform::PropertyList> list = {};                   // nothing for never
    std::optional<std::chrono::system_clock::time_point> askedAt = {}; // of the list; nothing if not known
    AnswerReason reason = {};                                          // none for now
};

const char* wordFor(CommandAnswer::State state);

// One question: what there was before it, and what became of it.
struct AnswersToQuestion {
    std::vector<StoredAnswer> before;
    // Nothing while the question is under way, or when its end was not seen.
    std::optional<std::vector<StoredAnswer>> after = {};
    // A job that was there before the question, and carried it; 0 for none.
    int sharedJob = 0;
};

// The reason of a scheduler that did not do what it was asked for; none for a problem of kind none.
AnswerReason reasonOf(const SchedulerProblem& problem);

// Why a question to the queue's printer is not answered, as far as that is seen from here: what the scheduler
// said, what keeps the job, what became of it. `isOver`: whether its end was seen.
AnswerReason reasonOf(const SchedulerPrinter& printer, bool isOver);

// In the order of the PPD's commands. An answer is new when it is another one than before, or the shared
// job's; of the others `reason` says why not, unless the filter has told.
std::vector<CommandAnswer> commandAnswers(
    const AnswersToQuestion& answers, const SchedulerPrinter& printer, const AnswerReason& reason);

// For people, in the locale's way: "14:05" of today, and with the date of another day.
std::string timeText(std::chrono::system_clock::time_point time);

} // namespace orvan
