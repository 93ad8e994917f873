// A printing system of one's own: a private CUPS scheduler on a Unix socket, in a folder of its own, that
// leaves the machine's scheduler and its queues alone. It is for tests and demonstrations. It runs as root
// and as an ordinary user, and is open to that user alone, who may do everything with it without a password.
#pragma once

#include "TestBed/PrintingSystem/FolderGuard.h"
#include "TestBed/PrintingSystem/PrintJob.h"
#include "TestBed/PrintingSystem/SchedulerFolder.h"
#include "TestBed/PrintingSystem/SchedulerProcess.h"
#include "TestBed/Session/ClientEnvironment.h"
#include "TestBed/Session/Failure.h"

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

struct PrintingSystemOptions {
    SchedulerFolderOptions folder;
    // The cupsd to run; empty: the machine's.
    std::filesystem::path scheduler;
    // How long it may take until it answers.
    std::chrono::milliseconds patience = std::chrono::seconds(20);
};

struct QueueDescription {
    std::string name;
    std::filesystem::path ppdFile;
    // Where the output goes; see also PrintingSystem::fileDevice().
    std::string deviceURI = "file:///dev/null";
};

// Used from one thread, the one that started it; see SchedulerProcess. No operation changes this process but
// adoptEnvironment().
class PrintingSystem {
public:
    // Answers once the scheduler does. Null, and *failure says why, when it does not come up; nothing is left
    // behind then.
    static std::unique_ptr<PrintingSystem> start(const PrintingSystemOptions& options, Failure* failure);
    PrintingSystem(const PrintingSystem&) = delete;
    PrintingSystem& operator=(const PrintingSystem&) = delete;
    // Ends the scheduler and removes the folder, unless it is to be kept.
    ~PrintingSystem() = default;

    // How a client finds this system and no configuration of the user's or the machine's.
    ClientEnvironment environment() const;
    // Puts the environment into this process and makes libcups, on this thread, look at it anew.
    void adoptEnvironment() const;

    const SchedulerFolder& folder() const { return *folder_; }
    // A device that puts the output of a queue's last job into a file, and that file.
    std::string fileDevice(const std::string& queue) const { return "file://" + outputFile(queue).string(); }
    std::filesystem::path outputFile(const std::string& queue) const { return folder_->output() / queue; }

    // Queues. A queue takes and prints jobs as soon as it is added; adding one of the same name changes it.
    [[nodiscard]] Failure addQueue(const QueueDescription& queue) const;
    [[nodiscard]] Failure deleteQueue(const std::string& queue) const;
    [[nodiscard]] Failure setDefaultQueue(const std::string& queue) const;
    // A paused queue takes jobs and prints none.
    [[nodiscard]] Failure pauseQueue(const std::string& queue) const;
    [[nodiscard]] Failure resumeQueue(const std::string& queue) const;
    // Jobs that come from now on are held, each until it is released; and no more of that.
    [[nodiscard]] Failure holdNewJobs(const std::string& queue) const;
    [[nodiscard]] Failure stopHoldingNewJobs(const std::string& queue) const;
    // A queue that rejects says no to new jobs.
    [[nodiscard]] Failure rejectJobs(const std::string& queue) const;
    [[nodiscard]] Failure acceptJobs(const std::string& queue) const;

    // Jobs. Submits a file of a type that the scheduler recognises; *job is the new job's number.
    [[nodiscard]] Failure print(const std::string& queue, const std::filesystem::path& file,
        const std::map<std::string, std::string>& options, int* job) const;
    // Every job of a queue, settled ones too, oldest first, with all its attributes.
    [[nodiscard]] Failure jobs(const std::string& queue, std::vector<PrintJob>* jobs) const;
    [[nodiscard]] Failure releaseJob(int job) const;
    [[nodiscard]] Failure cancelJob(int job) const;
    // The job, as it is when it is settled or the time is over; absent when the scheduler does not know it.
    std::optional<PrintJob> waitForJob(int job, std::chrono::milliseconds patience) const;
    // What was submitted: the file in the spool of the job's n-th document, the first being 1. As the
    // scheduler's user owns it, others may not be able to read it.
    std::filesystem::path spooledDocument(int job, int document = 1) const;

    // The scheduler, for tests of what happens when it fails. Queues and jobs survive each of these.
    SchedulerProcess& scheduler() { return scheduler_; }
    // Ends it if it runs, starts it and waits until it answers.
    [[nodiscard]] Failure restartScheduler();

private:
    explicit PrintingSystem(PrintingSystemOptions options) : options_(std::move(options)) {}
    Failure launch();
    Failure waitUntilAnswering();
    Failure queueOperation(ipp_op_t operation, const std::string& queue, const std::string& attempt) const;
    Failure jobOperation(ipp_op_t operation, int job, const std::string& attempt) const;
    std::optional<PrintJob> findJob(int job) const;

    PrintingSystemOptions options_;
    // In this order: the scheduler goes first, then its folder, then the folder's guard.
    std::unique_ptr<FolderGuard> guard_;
    std::unique_ptr<SchedulerFolder> folder_;
    SchedulerProcess scheduler_;
};

} // namespace orvan
