// How a command waits for printers.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace orvan {

// Runs the main loop until `isOver` holds, the time is over, or the person interrupts (Interruption.h; a
// guard has to exist for that). Meanwhile a terminal shows what `text` answers, and how long it has been.
// Main thread.
void waitForPrinters(const std::function<bool()>& isOver, std::chrono::duration<double> time,
    const std::function<std::string()>& text);

} // namespace orvan
