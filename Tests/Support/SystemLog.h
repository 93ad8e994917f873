// What a test program would have written to the system log. For one source of it.
#pragma once

#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

namespace orvan {

inline std::vector<std::string> logLines;

inline void noteLogLine(const char* format, va_list arguments) {
    std::string line(4096, '\0');
    line.resize(static_cast<std::size_t>(std::vsnprintf(line.data(), line.size(), format, arguments)));
    logLines.push_back(line);
}

} // namespace orvan

// In place of the C library's, and of the one that checked calls of it become; for shared objects as well, as
// the program's own symbols come first.
extern "C" __attribute__((visibility("default"))) void syslog(int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    orvan::noteLogLine(format, arguments);
    va_end(arguments);
}
extern "C" __attribute__((visibility("default"))) void __syslog_chk(
    int, int, const char* format, ...) { // NOLINT(bugprone-reserved-identifier)
    va_list arguments;
    va_start(arguments, format);
    orvan::noteLogLine(format, arguments);
    va_end(arguments);
}
