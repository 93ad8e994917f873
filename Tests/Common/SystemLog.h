// What a test program would have written to the system log. For one source of it.
#pragma once

#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

namespace orvan {

inline std::vector<std::string> logLines;

} // namespace orvan

// In place of the C library's.
extern "C" void syslog(int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::string line(4096, '\0');
    line.resize(static_cast<std::size_t>(std::vsnprintf(line.data(), line.size(), format, arguments)));
    va_end(arguments);
    orvan::logLines.push_back(line);
}
