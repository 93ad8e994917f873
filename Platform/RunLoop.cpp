#include "Platform/RunLoop.h"

#include "Platform/Guarded.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace platform {

// What the run loop holds: the timer itself, so that a timer nobody else holds goes on.
struct RepeatingTimer::Source {
    std::shared_ptr<RepeatingTimer> timer;

    static gboolean tick(gpointer data) {
        static_cast<Source*>(data)->timer->fire();
        // A timer that was stopped meanwhile has removed its source itself.
        return G_SOURCE_CONTINUE;
    }
    static void release(gpointer data) { delete static_cast<Source*>(data); }
};

std::shared_ptr<RepeatingTimer> RepeatingTimer::schedule(
    double interval, Handler handler, std::string userInfo) {
    std::shared_ptr<RepeatingTimer> timer(new RepeatingTimer(std::move(userInfo)));
    timer->handler_ = std::make_shared<const Handler>(std::move(handler));
    const auto milliseconds = static_cast<guint>(std::lround(std::max(interval, 0.001) * 1000));
    timer->sourceID_ = g_timeout_add_full(
        G_PRIORITY_DEFAULT, milliseconds, Source::tick, new Source{timer}, Source::release);
    return timer;
}

RepeatingTimer::~RepeatingTimer() {
    stop();
}

void RepeatingTimer::fire() {
    // Both are kept for the length of the call, in which the timer may be stopped.
    const std::shared_ptr<const Handler> handler = handler_;
    if (handler != nullptr) guarded("timer", [&] { (*handler)(*this); });
}

void RepeatingTimer::stop() {
    if (sourceID_ == 0) return;
    // The source may hold the last reference to this timer, and the handler one to the timer's owner: neither
    // may go before this function is through.
    const std::shared_ptr<const Handler> handler = std::exchange(handler_, nullptr);
    g_source_remove(std::exchange(sourceID_, 0));
}

void performOnMainLoop(std::function<void()> function) {
    const auto call = [](gpointer data) -> gboolean {
        guarded("main loop", *static_cast<std::function<void()>*>(data));
        return G_SOURCE_REMOVE;
    };
    const auto release = [](gpointer data) { delete static_cast<std::function<void()>*>(data); };
    g_idle_add_full(G_PRIORITY_DEFAULT, call, new std::function<void()>(std::move(function)), release);
}

bool runMainLoopUntil(const std::function<bool()>& condition, std::chrono::duration<double> time) {
    const auto end = std::chrono::steady_clock::now() + time;
    // Wakes the loop for a look at the condition and the clock.
    constexpr double kLook = 0.02;
    const auto wake = RepeatingTimer::schedule(kLook, [](RepeatingTimer&) {}, {});
    bool holds = condition();
    while (!holds && std::chrono::steady_clock::now() < end) {
        g_main_context_iteration(nullptr, TRUE);
        holds = condition();
    }
    wake->stop();
    return holds;
}

} // namespace platform
