#include "Formats/LeadingInteger.h"

#include <algorithm>
#include <limits>

namespace platform {

std::int32_t leadingInteger(std::string_view text) {
    constexpr int kBase = 10;
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    std::int64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        number = std::min<std::int64_t>(number * kBase + (c - '0'), std::int64_t{1} << 32U);
    }
    return nearestInteger(isNegative ? -number : number);
}

std::int32_t nearestInteger(std::int64_t number) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

} // namespace platform
