#include "Common/ToldLevels.h"

#include "Formats/LeadingInteger.h"

namespace orvan {

std::optional<std::int64_t> levelInWord(std::string_view status) {
    constexpr std::int64_t kFull = 100;
    if (status == "OK") return kFull;
    const std::size_t first = status.find_first_not_of(" \t\n\r\f\v");
    if (first == std::string_view::npos || status[first] < '0' || status[first] > '9') return std::nullopt;
    return platform::leadingInteger(status);
}

} // namespace orvan
