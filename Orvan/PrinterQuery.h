// Asks printers through their queues, and finds out why when no answer comes.
#pragma once

#include "BiDi/OrvanBiDi.h"
#include "Formats/PropertyList.h"
#include "Orvan/SchedulerPatience.h"
#include "PrintDialog/Host/DialogPrinter.h"
#include "PrintDialog/Host/PrinterAnswers.h"
#include "PrintDialog/Host/PrinterPage.h"
#include "PrintDialog/Host/QueuePPD.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct PrinterAnswers {
    std::string queue;
    std::vector<CommandAnswer> commands; // in the order of the PPD's
    // Why not all of them are new; none, too, when what is missing is a remark alone.
    AnswerReason problem;
    // The custom papers that the queue's driver cannot name to the printer.
    std::vector<CustomPaper> unknownPapers;
    // Published names of papers that are not the printer's any more; known where it has answered now.
    std::vector<std::string> outdatedTitles;
    // The queue's PPD, for titles; null when it was not fetched.
    std::shared_ptr<const DialogPPD> ppd;

    // Those there are, of this question or of earlier ones, in their order.
    std::vector<platform::PropertyList> responses() const;
    // When the printer was asked for them, for the first of several, remarks aside; nothing when that is not
    // known.
    std::optional<std::chrono::system_clock::time_point> askedAt() const;
    // The remarks, for people: "except job accounting: the agent does not answer"; "" for none.
    std::string remark() const;
};

// One question to one printer: all that its queue's PPD lists in "cupsCommands". Which way it takes follows
// the system release. A queue that is paused is not asked: the job would stay in it. Main thread.
class PrinterQuestion {
public:
    // Fetches the queue, and asks as soon as it is there, by what its PPD says. The patience is that of the
    // round, and outlives the question.
    PrinterQuestion(std::string queue, SchedulerPatience& patience);
    ~PrinterQuestion();
    PrinterQuestion(const PrinterQuestion&) = delete;
    PrinterQuestion& operator=(const PrinterQuestion&) = delete;

    const std::string& queue() const { return answers_.queue; }
    // Whether the queue is being fetched, or the job handed over.
    bool isStarting() const;
    // Whether the main loop has to run on. A command job that is held or was stopped is not waited for.
    bool isWaiting() const;
    // Whether it was asked and has not come to its end.
    bool isUnderWay() const;
    // The command job that keeps the question, as it was seen last.
    std::optional<QueueJob> activeJob() const;
    // Takes that job back, if it is this question's own.
    void withdraw();
    // Ends the question. `timeout` is for the message of one that still waits.
    PrinterAnswers end(std::chrono::duration<double> timeout);

private:
    class Callback;
    class Collector;

    void queueArrived(std::optional<OpenedQueue> opened, const SchedulerProblem& problem);
    void dispatch(const CommandList& commands, bool isPaused);
    AnswerReason reason(std::chrono::duration<double> timeout) const;
    std::vector<CommandAnswer> answersOfFilter(const AnswerReason& reason);

    PrinterAnswers answers_;
    SchedulerPatience* patience_;
    std::shared_ptr<DialogPPD> ppd_;               // null until the queue is fetched
    std::shared_ptr<DialogPrinter> dialogPrinter_; // the channel's; null until the queue is fetched
    SchedulerPrinter* printer_ = nullptr;          // its scheduler's side
    AnswersToQuestion stored_;
    std::shared_ptr<Collector> collector_;
    std::shared_ptr<Callback> callback_; // the channel's
    std::shared_ptr<OrvanBiDi> channel_; // null while nothing is asked
    bool isFetching_ = true;
    SchedulerRequest request_; // for the queue
};

// Asks all of the printers at once, in one main loop, and waits for their answers at most for so long; the
// command jobs of those that have not answered then are taken back, unless nobody waits. With a terminal it
// shows whom it waits for. A person who interrupts ends the wait: all command jobs are taken back, and
// wasInterrupted() holds. In the order of the queues. Main thread.
std::vector<PrinterAnswers> askPrinters(
    const std::vector<std::string>& queues, std::chrono::duration<double> timeout);

// The names of the queues of Orvan printers, in alphabetical order; also of one whose PPD cannot be read,
// when the scheduler says that it was made for one. Nothing, and why, when the scheduler is not there.
std::optional<std::vector<std::string>> orvanQueues(
    std::chrono::duration<double> timeout, SchedulerProblem& problem);

// The release that the process stands for from now on; before anything asks for it. "" leaves it.
void setSystemRelease(const std::string& release);
// The release that the process stands for.
std::string currentRelease();

} // namespace orvan
