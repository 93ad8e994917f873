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

std::optional<std::int32_t> packedVersion() {
    const char* const set = std::getenv("ORVAN_PACKED_VERSION");
    std::string_view text = set != nullptr ? set : "";
    if (text.starts_with("0x")) text.remove_prefix(2);
    constexpr int kHexadecimal = 16;
    std::int32_t version = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, version, kHexadecimal);
    const bool isWhole = error == std::errc() && end == last && version >= 0;
    return isWhole ? std::optional(version) : std::nullopt;
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
    if (selector == kGestaltSystemVersion) {
        const std::optional<std::int32_t> version = packedVersion();
        if (version) *answer = *version;
        return version ? 0 : kGestaltUndefinedSelector;
    }
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
