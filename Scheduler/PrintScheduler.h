// The CUPS scheduler that this process talks to (CUPS_SERVER, client.conf). Everything here blocks, for no
// longer than `patience` for a single answer, and may be called from any thread.
#pragma once

#include "Formats/Failure.h"
#include "Platform/PrintServerConnection.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

// A queue's PPD as a file: a copy, or a link to the scheduler's own, that goes with this object.
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

// Null, and a message for people in `error`, when the scheduler is not there, has no such queue,
// or the queue has no PPD.
std::unique_ptr<FetchedPPD> fetchQueuePPDFile(
    const std::string& queue, std::chrono::milliseconds patience, platform::Failure& error);

// A queue as the scheduler describes it.
struct SchedulerQueue {
    std::string name;
    bool isClass = false;     // of queues; it has no PPD of its own
    std::string makeAndModel; // of the PPD that it was made with
    std::string deviceURI;    // without the credentials that the scheduler keeps to itself
    bool takesJobs = true;
    bool isPaused = false;
    std::vector<std::string> reasons; // printer-state-reasons, without "none"
};

// The scheduler's queues. Nothing, and a message for people in `error`, when it is not there.
std::optional<std::vector<SchedulerQueue>> listQueues(
    std::chrono::milliseconds patience, platform::Failure& error);

// Whether the scheduler runs on this computer.
bool isSchedulerHere();

// The scheduler's answer to a request, which this takes over. Null, and a message for people in `error`,
// when it is not there, does not answer, or refuses.
platform::IPPMessage askScheduler(
    ipp_t* request, std::chrono::milliseconds patience, platform::Failure& error);

// For messages: the scheduler and where it is.
std::string schedulerName();

} // namespace orvan
