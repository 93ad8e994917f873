// A program at a terminal of its own.
#pragma once

#include "Platform/FileDescriptor.h"
#include "Tests/Support/Processes.h"

namespace orvan {

class Terminal {
public:
    explicit Terminal(const std::vector<std::string>& command, const Environment& environment = {});

    void type(const std::string& text) const;
    bool echoes() const;
    // What it shows, up to `text` or to its end; with no text, to its end.
    std::string shownUntil(const std::string& text);
    std::string shownUntilEnd();
    // As waitpid() has it.
    int waitForEnd() const;

private:
    platform::FileDescriptor master_;
    platform::FileDescriptor slave_; // held, so that it can be looked at afterwards
    pid_t process_ = -1;
};

} // namespace orvan
