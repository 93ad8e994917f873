#include "Platform/SystemLog.h"

#include <syslog.h>

namespace platform {

// No openlog here: its settings belong to the whole process, and the process is somebody else's application.
void systemLog(std::string_view text) {
    while (!text.empty() && text.back() == '\n')
        text.remove_suffix(1);
    ::syslog(LOG_USER | LOG_NOTICE, "orvan: %.*s", static_cast<int>(text.size()), text.data());
}

} // namespace platform
