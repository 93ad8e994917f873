// The wall between our code and the application whose guest it is.
#pragma once

#include "Platform/SystemLog.h"

#include <exception>
#include <string>

namespace orvan {

// Runs the body of a GTK callback. No exception gets past here into GTK: one that does happen is a line in
// the system log, and the callback has done nothing more.
template <class Body>
void guarded(Body&& body) noexcept {
    try {
        body();
    } catch (const std::exception& problem) {
        platform::systemLog(std::string("paper options: ") + problem.what());
    } catch (...) {
        platform::systemLog("paper options: an unknown fault");
    }
}

} // namespace orvan
