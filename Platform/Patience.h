// How long a person is kept waiting for a scheduler that does not answer.
#pragma once

#include <algorithm>
#include <chrono>

namespace platform {

// An amount of waiting that several requests to one scheduler share. Before each of them the scheduler is
// asked for a sign of life. A sign renews the patience, however long it took; when none comes, the time
// waited for it is used up. With nothing left a request is still tried, but for so short a time that nobody
// notices: a scheduler that is alive answers within it.
//
// So a scheduler that stops answering holds its caller up for kAll and a few times kLeast, below two seconds,
// and from then on for kLeast a request.
class Patience {
public:
    static constexpr std::chrono::milliseconds kAll{1500};
    static constexpr std::chrono::milliseconds kLeast{50};

    bool isUsedUp() const { return left_ <= kLeast; }
    std::chrono::milliseconds forOneRequest() const { return std::max(left_, kLeast); }

    void wasAnswered() { left_ = kAll; }
    void waitedInVain(std::chrono::milliseconds time) { left_ = std::max(left_ - time, kLeast); }

private:
    std::chrono::milliseconds left_ = kAll;
};

} // namespace platform
