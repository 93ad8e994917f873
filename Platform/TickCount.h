// The system's tick counter.
#pragma once

#include <chrono>
#include <cstdint>
#include <ratio>

namespace platform {

// 60 ticks are a second.
using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 60>>;

// The ticks since some moment before this process began. The counter has 32 bits and goes on from 0.
inline std::uint32_t TickCount() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<Ticks>(now).count());
}

} // namespace platform
