#include "Common/PDELogging.h"

#include "Platform/SystemLog.h"

namespace orvan {

void writeTraceLine(std::string_view tag, const LoggedObject& object, std::string_view format,
    std::span<const platform::FormatValue> values) {
    std::string line(tag);
    if (object.description()) line += " self(" + *object.description() + ")";
    platform::systemLog(line + " " + platform::formatText(format, values));
}

} // namespace orvan
