#include "Platform/Gestalt.h"

#include "Platform/SystemLog.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace platform {
namespace {

using Release = std::array<std::int32_t, 3>;

std::optional<Release> parseRelease(std::string_view text) {
    Release release{};
    for (std::size_t position = 0; position < release.size(); ++position) {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), release[position]);
        if (error != std::errc() || release[position] < 0) return std::nullopt;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (text.empty()) return release;
        if (text.front() != '.') return std::nullopt;
        text.remove_prefix(1);
    }
    return std::nullopt;
}

} // namespace

std::string systemRelease() {
    const char* const set = std::getenv("ORVAN_SYSTEM_RELEASE");
    if (set == nullptr || *set == '\0') return kDefaultSystemRelease;
    if (parseRelease(set)) return set;
    static const bool isLogged = [set] {
        systemLog(std::string("ORVAN_SYSTEM_RELEASE=") + set + " is no release; it counts as " +
                  kDefaultSystemRelease);
        return true;
    }();
    static_cast<void>(isLogged);
    return kDefaultSystemRelease;
}

std::int32_t Gestalt(std::uint32_t selector, std::int32_t* answer) {
    std::size_t position = 0;
    switch (selector) {
    case kGestaltSystemVersionMajor:
        position = 0;
        break;
    case kGestaltSystemVersionMinor:
        position = 1;
        break;
    case kGestaltSystemVersionBugFix:
        position = 2;
        break;
    default:
        return kGestaltUndefinedSelector;
    }
    const std::optional<Release> release = parseRelease(systemRelease());
    if (!release) return kGestaltUndefinedSelector;
    *answer = (*release)[position];
    return 0;
}

} // namespace platform
