// Standard output for answers alone.
#pragma once

#include "Platform/FileDescriptor.h"

namespace orvan {

// While it exists, what anything in this process writes to standard output goes to standard error: for calls
// of code that has messages of its own. One thread.
class OutputGuard {
public:
    OutputGuard();
    ~OutputGuard();
    OutputGuard(const OutputGuard&) = delete;
    OutputGuard& operator=(const OutputGuard&) = delete;

private:
    platform::FileDescriptor output_;
};

} // namespace orvan
