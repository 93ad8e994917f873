// One line to the system log, syslog(3).
#pragma once

#include <string_view>

namespace platform {

// Writes the text as one message of priority "notice" under the name "orvan". A trailing line feed is the
// log's own affair and does no harm. Callable from any thread; the application's own use of syslog is left as
// it is.
void systemLog(std::string_view text);

} // namespace platform
