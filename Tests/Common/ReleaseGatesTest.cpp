#include "Common/Utilities/ReleaseGates.h"
#include "Tests/Support/Processes.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

namespace orvan {
namespace {

// The gates' answers: 10.5, 10.7 and 10.10 or later.
std::string gates() {
    return {RunningOn105OrLater() ? '+' : '-', RunningOn107OrLater() ? '+' : '-',
        RunningOn1010OrLater() ? '+' : '-'};
}

// A gate answers once a process, so each release is asked about in a process of its own.
TEST(ReleaseGates, OpenFromTheirReleaseOn) {
    const std::pair<std::optional<std::string>, const char*> cases[] = {
        {"10.6.8", "+--"},
        {"10.7.0", "++-"},
        {"10.7", "++-"},
        {"10.10", "+++"},
        {"11", "+++"},
        {"9.12", "+--"},
        {"ten", "++-"}, // as unset
        {"", "++-"},
        {std::nullopt, "++-"},
    };
    for (const auto& [release, open] : cases)
        EXPECT_EQ(inChild({{"ORVAN_SYSTEM_RELEASE", release}}, gates), open) << release.value_or("(unset)");
}

} // namespace
} // namespace orvan
