#include "Platform/Gestalt.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>
#include <vector>

using namespace platform;

TEST(Gestalt, releaseNumbersComeFromTheEnvironment) {
    struct Case {
        const char* set;
        std::vector<int> release;
    };
    for (const Case& c : {
             Case{nullptr, {10, 9, 0}},
             Case{"10.6.8", {10, 6, 8}},
             Case{"10.10", {10, 10, 0}},
             Case{"11", {11, 0, 0}},
             Case{"", {10, 9, 0}},
             Case{"ten", {10, 9, 0}},
             Case{"10.", {10, 9, 0}},
             Case{"10.-1", {10, 9, 0}},
             Case{"10.9.0.1", {10, 9, 0}},
             Case{"10.99999999999", {10, 9, 0}},
         }) {
        SCOPED_TRACE(c.set != nullptr ? c.set : "(unset)");
        c.set != nullptr ? setenv("ORVAN_SYSTEM_RELEASE", c.set, 1) : unsetenv("ORVAN_SYSTEM_RELEASE");
        std::vector<int> release;
        for (const auto selector :
            {kGestaltSystemVersionMajor, kGestaltSystemVersionMinor, kGestaltSystemVersionBugFix}) {
            std::int32_t answer = -7;
            if (Gestalt(selector, &answer) == 0)
                release.push_back(answer);
            else
                EXPECT_EQ(answer, -7) << "an unanswered query leaves the value alone";
        }
        EXPECT_EQ(release, c.release);
    }
    unsetenv("ORVAN_SYSTEM_RELEASE");
}

TEST(Gestalt, packedVersionIsKnownWhenSet) {
    constexpr std::int32_t kUnknown = -7;
    const std::pair<const char*, std::int32_t> cases[] = {{"0x1023", 0x1023}, {"1050", 0x1050},
        {"", kUnknown}, {"-1023", kUnknown}, {"0x1023.", kUnknown}, {"0x123456789", kUnknown}};
    std::int32_t packed = kUnknown;
    EXPECT_EQ(Gestalt(kGestaltSystemVersion, &packed), kGestaltUndefinedSelector);
    for (const auto& [set, version] : cases) {
        setenv("ORVAN_PACKED_VERSION", set, 1);
        packed = kUnknown;
        EXPECT_EQ(
            Gestalt(kGestaltSystemVersion, &packed), version == kUnknown ? kGestaltUndefinedSelector : 0);
        EXPECT_EQ(packed, version) << set;
    }
    unsetenv("ORVAN_PACKED_VERSION");
}
