// As many lines as one input may make in a log.
#pragma once

#include <functional>
#include <string>
#include <utility>

namespace platform {

// Hands on the first lines, and says at its end how many more there were. One thread.
class LogLimit {
public:
    static constexpr unsigned kMostLines = 100;

    explicit LogLimit(std::function<void(const std::string&)> sink) : sink_(std::move(sink)) {}
    LogLimit(const LogLimit&) = delete;
    LogLimit& operator=(const LogLimit&) = delete;
    ~LogLimit() {
        if (count_ > kMostLines)
            sink_("... and " + std::to_string(count_ - kMostLines) + " more lines like that");
    }

    // Whether the next line is handed on; it counts in any case. For who would only make it for that.
    bool takesOne() { return ++count_ <= kMostLines; }
    void write(const std::string& line) {
        if (takesOne()) sink_(line);
    }

private:
    std::function<void(const std::string&)> sink_;
    unsigned count_ = 0;
};

} // namespace platform
