// How long nothing has come.
#pragma once

#include <cstdint>

namespace orvan {

// Counts ticks of Platform/TickCount.h. The count of now is always handed in.
class IdleTimer {
public:
    static constexpr std::uint32_t kLimit = 120; // two seconds

    explicit IdleTimer(std::uint32_t now) : start_(now) {}

    void restart(std::uint32_t now) { start_ = now; }

    // Whether more than the limit has passed. A count that has begun again at 0 is measured from there.
    bool hasPassed(std::uint32_t now) {
        if (now < start_) start_ = 0;
        return now - start_ > kLimit;
    }

private:
    std::uint32_t start_;
};

} // namespace orvan
