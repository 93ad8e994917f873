#include "Common/PDELogging.h"

#include "Platform/SystemLog.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace orvan {
namespace {

// What a line has no other way to show.
constexpr std::array<std::pair<char, std::string_view>, 4> kShown{
    {{'\n', "\\n"}, {'\0', "\\0"}, {'\r', "\\r"}, {'\t', "\\t"}}};

std::string shownOnOneLine(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const auto* const shown = std::ranges::find(kShown, c, &decltype(kShown)::value_type::first);
        shown != kShown.end() ? line += shown->second : line += c;
    }
    return line;
}

} // namespace

void writeTraceLine(std::string_view tag, const LoggedObject& object, std::string_view format,
    std::span<const platform::FormatValue> values) {
    std::string line(tag);
    if (object.description()) line.append(" self(").append(*object.description()).append(")");
    line.append(" ").append(platform::formatText(format, values));
    line.resize(line.find_last_not_of('\n') + 1); // which is the log's own affair
    platform::systemLog(shownOnOneLine(line));
}

} // namespace orvan
