// A file descriptor with one owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace platform {

// Closes the descriptor when it ends. -1 is none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        other.reset();
        return *this;
    }
    ~FileDescriptor() { reset(); }

    explicit operator bool() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    void reset() {
        if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
    }

private:
    int descriptor_ = -1;
};

} // namespace platform
