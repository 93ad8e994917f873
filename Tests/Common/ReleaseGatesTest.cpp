#include "Common/Utilities/ReleaseGates.h"
#include "Tests/Support/Processes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace orvan {
namespace {

// The gates' answers: 10.5, 10.7 and 10.10 or later.
std::string gates() {
    return {RunningOn105OrLater() ? '+' : '-', RunningOn107OrLater() ? '+' : '-',
        RunningOn1010OrLater() ? '+' : '-'};
}

// A gate answers once a process, so each release is asked about in a process of its own.
TEST(ReleaseGates, OpenFromTheirReleaseOn) {
    const struct {
        std::optional<std::string> release;
        const char* open;
    } cases[] = {
        {"10.6.8", "+--"},
        {"10.7.0", "++-"},
        {"10.7", "++-"},
        {"10.10", "+++"},
        {"11", "+++"},
        {"9.12", "+--"},
        {"ten", "+--"},
        {std::nullopt, "++-"},
    };
    for (const auto& [release, open] : cases)
        EXPECT_EQ(inChild({{"ORVAN_SYSTEM_RELEASE", release}}, gates), open) << release.value_or("(unset)");
}

TEST(ReleaseGates, StandByTheirFirstAnswer) {
    const auto askedAgain = [] {
        const bool sevenBefore = RunningOn107OrLater();
        setenv("ORVAN_SYSTEM_RELEASE", "11.0", 1);
        return std::to_string(sevenBefore) + gates(); // 10.10 is asked about for the first time only now
    };
    EXPECT_EQ(inChild({{"ORVAN_SYSTEM_RELEASE", "10.6.8"}}, askedAgain), "0+-+");
}

} // namespace
} // namespace orvan
