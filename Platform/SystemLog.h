// One line to the system log, syslog(3).
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace platform {

// Writes the text as one message of priority "notice" under the name "orvan", and as one line: control
// characters become spaces. A trailing line feed is the log's own affair and does no harm. Callable from any
// thread; the application's own use of syslog is left as it is.
void systemLog(std::string_view text);

// Writes what has come and, behind it, its content: the names of people and of their documents, perhaps. The
// content is asked for and written only while the environment variable ORVAN_TRACE is set, to anything but
// nothing; otherwise the line says that it is left out.
void systemLogContent(std::string_view what, const std::function<std::string()>& content);

} // namespace platform
