// The facts about the release that this platform stands for.
#pragma once

#include <cstdint>
#include <string>

namespace platform {

// A four-character selector, for example gestaltSelector("sys1").
constexpr std::uint32_t gestaltSelector(const char (&code)[5]) {
    std::uint32_t selector = 0;
    for (int i = 0; i < 4; ++i)
        selector = (selector << 8U) | static_cast<unsigned char>(code[i]);
    return selector;
}

inline constexpr std::uint32_t kGestaltSystemVersionMajor = gestaltSelector("sys1");
inline constexpr std::uint32_t kGestaltSystemVersionMinor = gestaltSelector("sys2");
inline constexpr std::uint32_t kGestaltSystemVersionBugFix = gestaltSelector("sys3");
// One hexadecimal digit a position: 0x1023 is release 10.2.3.
inline constexpr std::uint32_t kGestaltSystemVersion = gestaltSelector("sysv");

inline constexpr std::int32_t kGestaltUndefinedSelector = -5551;

// 0 when the fact is known, and then it is in *answer; otherwise kGestaltUndefinedSelector and *answer is as
// it was. The three release numbers are those of systemRelease() ("10.6.8"; missing positions count as 0).
// The packed version is that of the environment variable ORVAN_PACKED_VERSION ("0x1040"), and not known
// without it: the resolvers of this platform do not all know "local", which it would stand for.
std::int32_t Gestalt(std::uint32_t selector, std::int32_t* answer);

// The release that the process stands for: that of the environment variable ORVAN_SYSTEM_RELEASE. Unset,
// empty or no release, which leaves a line in the system log, it is the default.
inline constexpr const char* kDefaultSystemRelease = "10.9.0";
std::string systemRelease();

} // namespace platform
