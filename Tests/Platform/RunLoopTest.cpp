#include "Platform/RunLoop.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace platform {
namespace {

void runLoopUntil(const std::function<bool()>& isDone) {
    const gint64 end = g_get_monotonic_time() + gint64{300} * G_USEC_PER_SEC;
    while (!isDone() && g_get_monotonic_time() < end)
        if (!g_main_context_iteration(nullptr, FALSE)) g_usleep(500);
}

TEST(RepeatingTimer, FiresUntilItIsStopped) {
    int fired = 0;
    // Nobody but the run loop holds the first one.
    std::weak_ptr<RepeatingTimer> timer = RepeatingTimer::schedule(
        0.01,
        [&fired](RepeatingTimer& self) {
            EXPECT_EQ(self.userInfo(), "info");
            if (++fired == 3) self.stop();
        },
        "info");
    EXPECT_EQ(fired, 0);
    timer.lock()->fire();
    EXPECT_EQ(fired, 1);
    runLoopUntil([&timer] { return timer.expired(); });
    EXPECT_EQ(fired, 3);
    EXPECT_TRUE(timer.expired());
}

TEST(RepeatingTimer, HoldsItsHandlerWhileItIsScheduled) {
    struct Owner {
        std::shared_ptr<RepeatingTimer> timer;
    };
    auto owner = std::make_shared<Owner>();
    const std::weak_ptr<Owner> watched = owner;
    owner->timer = RepeatingTimer::schedule(
        60, [owner](RepeatingTimer& self) { self.stop(); }, "");
    auto timer = owner->timer;
    owner.reset();
    EXPECT_FALSE(watched.expired());
    EXPECT_TRUE(timer->isScheduled());
    timer->fire();
    EXPECT_TRUE(watched.expired());
    EXPECT_FALSE(timer->isScheduled());
    timer->fire();
    timer->stop();
}

TEST(RepeatingTimer, SurvivesAHandlerThatThrows) {
    int fired = 0;
    const auto timer = RepeatingTimer::schedule(
        60,
        [&fired](RepeatingTimer&) {
            ++fired;
            throw std::runtime_error("on purpose");
        },
        "");
    timer->fire();
    timer->fire();
    EXPECT_EQ(fired, 2);
    timer->stop();
}

} // namespace
} // namespace platform
