// Where this process's requests to the print scheduler are carried out: on threads of their own, so that
// nobody's main loop waits for one.
#pragma once

#include "Scheduler/SchedulerConnection.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace orvan {

// What the asker holds of a request. When it goes, the request is dropped at once, whether it waits or is
// being carried out, and its handler is not called. Main thread.
class SchedulerRequest {
public:
    SchedulerRequest() = default;
    SchedulerRequest(SchedulerRequest&& other) noexcept = default;
    SchedulerRequest& operator=(SchedulerRequest&& other) noexcept;
    ~SchedulerRequest();

    void drop();

    struct Pending;

private:
    friend class SchedulerWorker;
    explicit SchedulerRequest(std::shared_ptr<Pending> pending) : pending_(std::move(pending)) {}

    std::shared_ptr<Pending> pending_;
};

// At most kMostConnections threads with a connection each. They come with the requests and stay; a connection
// goes after kIdleTime without one. They take no signals, and the process ends without them.
class SchedulerWorker {
public:
    static constexpr int kMostConnections = 4;
    static constexpr std::chrono::seconds kIdleTime{10};
    // For who does not wait for it.
    static constexpr std::chrono::seconds kDialogDeadline{10};

    using Duration = std::chrono::duration<double>;
    using Work = std::function<void(SchedulerConnection&)>;

    // The process's one. It is never destroyed; a process that was forked off has its own.
    static SchedulerWorker& shared();
    SchedulerWorker(const SchedulerWorker&) = delete;
    SchedulerWorker& operator=(const SchedulerWorker&) = delete;

    // Has `work` done on a worker's thread, with the scheduler that the asker's thread talks to, and `done`
    // called on the main loop with what it answers; with nothing when that takes longer than `time`, over the
    // whole of it. Requests about the same queue are carried out one after the other; "" is about none. From
    // the main thread; never waits.
    template <class Answer>
    [[nodiscard]] SchedulerRequest start(const std::string& queue, Duration time,
        std::function<Answer(SchedulerConnection&)> work, std::function<void(std::optional<Answer>)> done) {
        const auto answer = std::make_shared<std::optional<Answer>>();
        return startWork(
            queue, time,
            [answer, work](SchedulerConnection& connection) { answer->emplace(work(connection)); },
            [answer, done](bool isInTime) { done(isInTime ? std::move(*answer) : std::nullopt); });
    }

    // The same for a program that has nothing else to do: waits for the answer. From any thread but the
    // worker's.
    template <class Answer>
    std::optional<Answer> wait(
        const std::string& queue, Duration time, std::function<Answer(SchedulerConnection&)> work) {
        const auto answer = std::make_shared<std::optional<Answer>>();
        const bool isInTime = waitForWork(queue, time,
            [answer, work](SchedulerConnection& connection) { answer->emplace(work(connection)); });
        return isInTime ? std::move(*answer) : std::nullopt;
    }

private:
    using Pending = SchedulerRequest::Pending;
    struct Threads;

    SchedulerWorker();
    SchedulerRequest startWork(
        const std::string& queue, Duration time, Work work, std::function<void(bool isInTime)> done);
    bool waitForWork(const std::string& queue, Duration time, Work work);

    Threads* threads_; // outlives the process's other objects
};

} // namespace orvan
