#include "Platform/SystemLog.h"

#include "Formats/OneLine.h"

#include <syslog.h>

#include <cstdlib>

namespace platform {

// No openlog here: its settings belong to the whole process, and the process is somebody else's application.
void systemLog(std::string_view text) {
    while (!text.empty() && text.back() == '\n')
        text.remove_suffix(1);
    ::syslog(LOG_USER | LOG_NOTICE, "orvan: %s", onOneLine(text).c_str());
}

void systemLogContent(std::string_view what, const std::function<std::string()>& content) {
    const char* const trace = std::getenv("ORVAN_TRACE");
    const bool isTraced = trace != nullptr && *trace != '\0';
    systemLog(std::string(what) + (isTraced ? " " + content() : " (not shown without ORVAN_TRACE)"));
}

} // namespace platform
