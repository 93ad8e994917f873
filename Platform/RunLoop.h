// Timers and calls on the main run loop, which is GLib's default main context: the one that runs in every GTK
// application, also while it shows menus and modal dialogs. Main thread only,
// but for performOnMainLoop.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace platform {

// Calls its handler again and again. While it is scheduled the run loop keeps the handler, and with it
// whatever the handler holds.
class RepeatingTimer {
public:
    // The handler is told the timer that fired.
    using Handler = std::function<void(RepeatingTimer&)>;

    // Schedules a timer whose handler runs every `interval` seconds, for the first time after one interval.
    // `userInfo` is a text of the owner's own.
    static std::shared_ptr<RepeatingTimer> schedule(double interval, Handler handler, std::string userInfo);
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;
    ~RepeatingTimer();

    // Calls the handler now; the intervals go on as they were. Does nothing once the timer is stopped.
    void fire();
    // The handler is not called again, and is released; if it is running, when it returns.
    void stop();

    bool isScheduled() const { return sourceID_ != 0; }
    const std::string& userInfo() const { return userInfo_; }

private:
    struct Source;

    explicit RepeatingTimer(std::string userInfo) : userInfo_(std::move(userInfo)) {}

    std::shared_ptr<const Handler> handler_;
    std::string userInfo_;
    unsigned sourceID_ = 0;
};

// Has the main loop call the function once, soon. From any thread; whether the loop runs or comes to run is
// not this function's affair.
void performOnMainLoop(std::function<void()> function);

// Runs the main loop until the condition holds or the time is over; answers whether it holds. For programs
// that have no loop of their own running.
bool runMainLoopUntil(const std::function<bool()>& condition, std::chrono::duration<double> time);

} // namespace platform
