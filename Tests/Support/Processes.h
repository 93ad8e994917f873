// Processes of a test's own.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

// Variables that differ from the test's own; no value means unset.
using Environment = std::map<std::string, std::optional<std::string>>;

// Puts the variables into this process.
void changeEnvironment(const Environment& environment);

// Runs the program (a path and its arguments) in this process; ends it when that cannot be.
[[noreturn]] void runInstead(const std::vector<std::string>& command);

struct ProgramEnd {
    int exitCode = -1; // 128 + the signal's number when one ended it
    std::string output;
    std::string errors;
};

// Runs the program (a path and its arguments) to its end; it is killed when it takes nearly two minutes.
ProgramEnd runProgram(const std::vector<std::string>& command, const Environment& environment = {});

// A program that runs as long as this object does, or until end(). It also ends with the thread that made it,
// however that ends.
class BackgroundProcess {
public:
    // `prepare` is called in the new process.
    explicit BackgroundProcess(
        const std::vector<std::string>& command, const std::function<void()>& prepare = {});
    BackgroundProcess(const BackgroundProcess&) = delete;
    BackgroundProcess& operator=(const BackgroundProcess&) = delete;
    ~BackgroundProcess() { end(); }

    // Its exit code, or 128 and the number of the signal that ended it; -1 when it has ended before.
    int end(int signal = SIGTERM);

private:
    pid_t process_;
};

// Whether the condition comes true; looks again and again, for more than a minute.
bool eventually(const std::function<bool()>& condition);

// What `body` answers in a copy of this process with these variables: for what a process asks only once.
std::string inChild(const Environment& environment, const std::function<std::string()>& body);

} // namespace orvan
