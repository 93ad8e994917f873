// Where the messages of a reader go.
#pragma once

#include <functional>
#include <string>
#include <utility>

namespace platform {

// While it exists, this thread's messages of `Reader` go to its function, each without its line end, instead
// of where they go by themselves. The newest counts.
template <class Reader>
class MessageSink {
public:
    using Function = std::function<void(const std::string&)>;

    explicit MessageSink(Function function)
        : function_(std::move(function)), before_(std::exchange(newest, this)) {}
    MessageSink(const MessageSink&) = delete;
    MessageSink& operator=(const MessageSink&) = delete;
    ~MessageSink() { newest = before_; }

    // For the reader: whether somebody has taken the message.
    static bool take(const std::string& message) {
        if (newest != nullptr) newest->function_(message);
        return newest != nullptr;
    }

private:
    inline static thread_local const MessageSink* newest = nullptr;

    Function function_;
    const MessageSink* before_;
};

} // namespace platform
