#include "Common/Utilities/ReleaseGates.h"

#include "Platform/Gestalt.h"

#include <cstdint>

namespace orvan {
namespace {

bool runningOnTenPointOrLater(std::int32_t thresholdMinor) {
    std::int32_t major = 10;
    std::int32_t minor = 4;
    std::int32_t point = 0; // which decides nothing
    platform::Gestalt(platform::kGestaltSystemVersionMajor, &major);
    platform::Gestalt(platform::kGestaltSystemVersionMinor, &minor);
    platform::Gestalt(platform::kGestaltSystemVersionBugFix, &point);
    return major > 10 || (major == 10 && minor >= thresholdMinor);
}

} // namespace

bool RunningOn105OrLater() {
    return true;
}

bool RunningOn107OrLater() {
    static const bool tenSevenOrLater = runningOnTenPointOrLater(7);
    return tenSevenOrLater;
}

bool RunningOn1010OrLater() {
    static const bool tentenOrLater = runningOnTenPointOrLater(10);
    return tentenOrLater;
}

} // namespace orvan
