// Code that C code calls: an exception must not pass through its frames.
#pragma once

#include "Platform/SystemLog.h"

#include <exception>
#include <string>

namespace platform {

// Calls the function; an exception ends it with a line in the system log that names `where`.
template <typename Function>
void guarded(const char* where, Function&& function) noexcept {
    try {
        function();
    } catch (const std::exception& error) {
        systemLog(std::string(where) + ": " + error.what());
    } catch (...) {
        systemLog(std::string(where) + ": unknown exception");
    }
}

} // namespace platform
