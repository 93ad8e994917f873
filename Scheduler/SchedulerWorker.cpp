#include "Scheduler/SchedulerWorker.h"

#include "Platform/Guarded.h"
#include "Platform/RunLoop.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

namespace orvan {

using Clock = SchedulerConnection::Clock;

struct SchedulerRequest::Pending {
    enum class State {
        waiting, // for a thread
        running, // `connection` is the thread's
        ended,   // the work is done, and whoever waits is to be told
        dropped, // nobody is to be told
    };

    std::string queue;
    SchedulerAddress address = SchedulerAddress::ofThisThread(); // the asker's
    Clock::time_point deadline;
    SchedulerWorker::Work work; // the thread's, once it runs

    std::mutex mutex;
    std::condition_variable hasEnded;
    State state = State::waiting;
    SchedulerConnection* connection = nullptr;
    bool tellsMainLoop = false;

    // The main thread's.
    std::function<void(bool isInTime)> done;
    std::shared_ptr<platform::RepeatingTimer> alarm;

    // Nobody wants it any more; a thread that is at it is let go. False when the work had been done before.
    bool drop() {
        const std::lock_guard lock(mutex);
        if (state == State::ended) return false;
        state = State::dropped;
        if (connection != nullptr) connection->abort();
        return true;
    }

    // On the main thread: the end, one way or another. The handler may let go of the request.
    static void tell(const std::shared_ptr<Pending>& pending, bool isInTime) {
        if (const auto timer = std::exchange(pending->alarm, nullptr)) timer->stop();
        if (const auto handler = std::exchange(pending->done, nullptr)) handler(isInTime);
    }
};

namespace {

using Pending = SchedulerRequest::Pending;
using State = Pending::State;

void carryOut(const std::shared_ptr<Pending>& pending, SchedulerConnection& connection) {
    {
        const std::lock_guard lock(pending->mutex);
        if (pending->state == State::dropped) return;
        pending->state = State::running;
        connection.begin(pending->deadline, pending->address);
        pending->connection = &connection;
    }
    platform::guarded("print scheduler", [&] { pending->work(connection); });
    pending->work = nullptr;
    const std::lock_guard lock(pending->mutex);
    pending->connection = nullptr;
    if (pending->state == State::dropped) return;
    pending->state = State::ended;
    pending->hasEnded.notify_all();
    if (pending->tellsMainLoop) platform::performOnMainLoop([pending] { Pending::tell(pending, true); });
}

} // namespace

SchedulerRequest::~SchedulerRequest() {
    drop();
}

SchedulerRequest& SchedulerRequest::operator=(SchedulerRequest&& other) noexcept {
    if (this == &other) return *this;
    drop();
    pending_ = std::move(other.pending_);
    return *this;
}

void SchedulerRequest::drop() {
    const auto pending = std::exchange(pending_, nullptr);
    if (pending == nullptr) return;
    pending->drop();
    if (const auto timer = std::exchange(pending->alarm, nullptr)) timer->stop();
    pending->done = nullptr;
}

// What the threads share.
struct SchedulerWorker::Threads {
    std::mutex mutex;
    std::condition_variable hasWork;
    std::deque<std::shared_ptr<Pending>> waiting;
    std::set<std::string> busyQueues;
    int count = 0;
    int idle = 0;

    // The first request that may be carried out now, taken from those that wait; null for none. Locked.
    std::shared_ptr<Pending> take() {
        std::erase_if(waiting, [](const auto& pending) {
            const std::lock_guard lock(pending->mutex);
            return pending->state == State::dropped;
        });
        const auto found = std::ranges::find_if(
            waiting, [this](const auto& pending) { return !busyQueues.contains(pending->queue); });
        if (found == waiting.end()) return nullptr;
        auto pending = *found;
        waiting.erase(found);
        if (!pending->queue.empty()) busyQueues.insert(pending->queue);
        return pending;
    }

    void run() {
        SchedulerConnection connection;
        std::unique_lock lock(mutex);
        for (;;) {
            if (const auto pending = take()) {
                lock.unlock();
                carryOut(pending, connection);
                lock.lock();
                busyQueues.erase(pending->queue);
                hasWork.notify_all();
                continue;
            }
            ++idle;
            const bool isWoken = hasWork.wait_for(lock, kIdleTime) == std::cv_status::no_timeout;
            if (!isWoken) {
                connection.disconnect();
                hasWork.wait(lock);
            }
            --idle;
        }
    }

    // Locked.
    void ensureThread() {
        if (idle >= static_cast<int>(waiting.size()) || count >= kMostConnections) return;
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        try {
            std::thread thread([this] {
                pthread_setname_np(pthread_self(), "orvan-scheduler");
                run();
            });
            thread.detach();
            ++count;
        } catch (const std::system_error&) {
            platform::systemLog("no thread to talk to the print scheduler on");
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

    void add(const std::shared_ptr<Pending>& pending) {
        const std::lock_guard lock(mutex);
        waiting.push_back(pending);
        ensureThread();
        hasWork.notify_one();
    }
};

SchedulerWorker::SchedulerWorker() : threads_(new Threads) {}

SchedulerWorker& SchedulerWorker::shared() {
    static SchedulerWorker* worker = nullptr;
    static pid_t owner = 0;
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    // Threads do not come along into a child process.
    if (std::exchange(owner, ::getpid()) != owner) worker = nullptr;
    if (worker == nullptr) worker = new SchedulerWorker;
    return *worker;
}

SchedulerRequest SchedulerWorker::startWork(
    const std::string& queue, Duration time, Work work, std::function<void(bool isInTime)> done) {
    const auto pending = std::make_shared<Pending>();
    pending->queue = queue;
    pending->deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
    pending->work = std::move(work);
    pending->done = std::move(done);
    pending->tellsMainLoop = true;
    // The request, which is the asker's, holds the timer, and the timer must not hold the request.
    pending->alarm = platform::RepeatingTimer::schedule(time.count(),
        [weak = std::weak_ptr(pending)](platform::RepeatingTimer&) {
            if (const auto late = weak.lock(); late != nullptr && late->drop()) Pending::tell(late, false);
        },
        {});
    threads_->add(pending);
    return SchedulerRequest(pending);
}

bool SchedulerWorker::waitForWork(const std::string& queue, Duration time, Work work) {
    const auto pending = std::make_shared<Pending>();
    pending->queue = queue;
    pending->deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
    pending->work = std::move(work);
    threads_->add(pending);
    std::unique_lock lock(pending->mutex);
    pending->hasEnded.wait_until(lock, pending->deadline, [&] { return pending->state == State::ended; });
    const bool isInTime = pending->state == State::ended;
    lock.unlock();
    if (!isInTime) pending->drop();
    return isInTime;
}

} // namespace orvan
