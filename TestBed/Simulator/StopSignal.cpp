#include "TestBed/Simulator/StopSignal.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace orvan {

StopSignal::StopSignal() : event_(eventfd(0, EFD_CLOEXEC)) {
    if (!event_) throw std::system_error(errno, std::generic_category(), "no event descriptor");
}

void StopSignal::raise() const {
    eventfd_write(descriptor(), 1);
}

bool StopSignal::waitFor(std::chrono::milliseconds time) const {
    pollfd stop{descriptor(), POLLIN, 0};
    return poll(&stop, 1, static_cast<int>(time.count())) > 0;
}

short StopSignal::waitForEvents(int other, short events, std::chrono::milliseconds time) const {
    std::array<pollfd, 2> both{{{descriptor(), POLLIN, 0}, {other, events, 0}}};
    if (poll(both.data(), both.size(), static_cast<int>(time.count())) <= 0) return 0;
    return both[0].revents != 0 ? short{0} : both[1].revents;
}

} // namespace orvan
