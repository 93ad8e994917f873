#include "Orvan/Waiting.h"

#include "Orvan/Interruption.h"
#include "Orvan/Terminal.h"
#include "Platform/RunLoop.h"

namespace orvan {

void waitForPrinters(const std::function<bool()>& isOver, std::chrono::duration<double> time,
    const std::function<std::string()>& text) {
    constexpr double kTick = 0.25; // seconds
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    ProgressLine line;
    const auto show = [&] {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start).count();
        line.show(text() + " (" + std::to_string(seconds) + " s)");
    };
    show();
    const auto timer =
        platform::RepeatingTimer::schedule(kTick, [&show](platform::RepeatingTimer&) { show(); }, {});
    platform::runMainLoopUntil([&isOver] { return wasInterrupted() || isOver(); }, time);
    timer->stop();
}

} // namespace orvan
