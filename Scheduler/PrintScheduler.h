// What the print scheduler is asked: its queues, their PPDs and their jobs.
//
// Each question is there in two forms: on a connection, for the worker's threads; and, for a program that has
// nothing else to do, one that waits for the answer, for no longer than `time` over the whole of it.
#pragma once

#include "Formats/Failure.h"
#include "Platform/PMPrinter.h"
#include "Scheduler/SchedulerConnection.h"
#include "Scheduler/SchedulerProblem.h"
#include "Scheduler/SchedulerWorker.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

// A queue as the scheduler describes it.
struct SchedulerQueue {
    std::string name;
    bool isClass = false;     // of queues; its PPD is one of theirs
    std::string makeAndModel; // of the PPD that it was made with
    std::string deviceURI;    // without the credentials that the scheduler keeps to itself
    bool takesJobs = true;
    bool isPaused = false;
    bool isPrinting = false;          // somebody's job
    std::vector<std::string> reasons; // printer-state-reasons, without "none"

    // Whether the queue is one printer. A class, or a queue that stands for several printers of other
    // schedulers ("implicitclass:", as cups-browsed makes them), sends each job to whichever is free.
    bool isOnePrinter() const { return !isClass && !deviceURI.starts_with("implicitclass:"); }
};

// A job as the scheduler describes it.
struct QueueJob {
    int id = 0;
    std::string queue;
    std::string title;
    ipp_jstate_t state = IPP_JSTATE_PENDING;
    std::string message; // the scheduler's last word on it; may be empty
};

// A queue's PPD as a file: a copy that goes with this object.
class FetchedPPD {
public:
    explicit FetchedPPD(std::filesystem::path file) : file_(std::move(file)) {}
    ~FetchedPPD();
    FetchedPPD(const FetchedPPD&) = delete;
    FetchedPPD& operator=(const FetchedPPD&) = delete;

    const std::filesystem::path& file() const { return file_; }

private:
    std::filesystem::path file_;
};

// What a dialog or a command has to know before it makes a panel, or a channel, for a queue.
struct FetchedQueue {
    SchedulerQueue queue;
    std::vector<QueueJob> activeJobs; // this person's
    std::unique_ptr<FetchedPPD> ppd;
};

// On a connection. Nothing, or null, and why in `problem`, when the scheduler is not there, does not answer
// or refuses.
namespace scheduler {
std::optional<std::vector<SchedulerQueue>> queues(SchedulerConnection& connection, SchedulerProblem& problem);
// This person's active jobs in a queue; in all queues for "".
std::optional<std::vector<QueueJob>> jobs(
    SchedulerConnection& connection, const std::string& queue, SchedulerProblem& problem);
// One job, whoever's it is.
std::optional<QueueJob> job(SchedulerConnection& connection, int number, SchedulerProblem& problem);
std::unique_ptr<FetchedPPD> ppdFile(
    SchedulerConnection& connection, const std::string& queue, SchedulerProblem& problem);
// The same, read, and no file left.
platform::PPDRecord ppdRecord(
    SchedulerConnection& connection, const std::string& queue, SchedulerProblem& problem);
std::optional<FetchedQueue> queue(
    SchedulerConnection& connection, const std::string& name, SchedulerProblem& problem);
// The name of the scheduler's default queue; "" when it has none.
std::optional<std::string> defaultQueue(SchedulerConnection& connection, SchedulerProblem& problem);
// Submits a command file as a job without cover sheets that is not held, whatever the queue's defaults are.
// Its number.
// Gives the queue another PPD; for whoever may administer the scheduler.
bool setPPD(SchedulerConnection& connection, const std::string& queue, const std::string& text,
    SchedulerProblem& problem);
std::optional<int> sendCommand(SchedulerConnection& connection, const std::string& queue,
    const std::string& text, const std::string& title, const platform::PMPrinter::Options& options,
    SchedulerProblem& problem);
} // namespace scheduler

// Waiting. Why not is a message for people, in `error`.
std::optional<std::vector<SchedulerQueue>> listQueues(
    SchedulerWorker::Duration time, SchedulerProblem& problem);
std::optional<std::vector<SchedulerQueue>> listQueues(
    SchedulerWorker::Duration time, platform::Failure& error);
std::optional<std::vector<QueueJob>> listActiveJobs(const std::string& queue, SchedulerWorker::Duration time);
bool setQueuePPD(const std::string& queue, const std::string& text, SchedulerWorker::Duration time,
    platform::Failure& error);
std::unique_ptr<FetchedPPD> fetchQueuePPDFile(
    const std::string& queue, SchedulerWorker::Duration time, platform::Failure& error);
// The queue that is meant when nobody names one, as lpstat(1) and lp(1) have it: LPDEST, or PRINTER unless
// that is "lp"; the default that this person, or an administrator for all, set with lpoptions(1); the
// scheduler's own. It need not exist. "" when there is none.
std::optional<std::string> findDefaultQueue(SchedulerWorker::Duration time, SchedulerProblem& problem);
// False when the job had ended before, or the scheduler refuses or is not there.
bool cancelJob(const std::string& queue, int job, SchedulerWorker::Duration time);

// Whether the scheduler runs on this computer.
bool isSchedulerHere();

} // namespace orvan
