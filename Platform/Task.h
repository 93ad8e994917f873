// Child processes whose standard input is fed and whose standard error is collected while they run, without
// anybody waiting for them.
#pragma once

#include "Formats/Failure.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace platform {

struct TaskDescription {
    using Environment = std::map<std::string, std::string>;

    std::string program;                // an absolute path; it is searched for nowhere
    std::vector<std::string> arguments; // behind argument 0, which is the program
    Environment environment;            // the whole of it
    std::string input;                  // what standard input delivers, through a pipe, before its end
};

struct TaskOutput {
    std::string standardError;
    bool isTruncated = false; // there was more than kMaximumTaskOutput, and it was dropped
};

inline constexpr std::size_t kMaximumTaskOutput = std::size_t{32} * 1024 * 1024;

// The environment of this process without what only concerns its desktop session: display and window
// manager, session bus and agents, toolkits, desktop folders, and what the dynamic linker was told for this
// application.
TaskDescription::Environment defaultTaskEnvironment();

// One process. What it writes to standard output is dropped; it inherits no descriptor and no blocked or
// ignored signal. A program is run when nobody but root and this process's user may change it or its folder.
//
// One thread: everything is done on the thread that launches the task, by its thread-default main context
// (GLib), which has to run for the task to get on.
class Task {
public:
    // Called once, when the process has ended and so has its output. The output ends with its last writer;
    // when the process has left behind another one that still has it open, it is waited for half a second
    // more at most. The handler may destroy the task.
    using EndHandler = std::function<void(const TaskOutput&)>;

    // Null, and why in `error`, when the process could not be started; the handler is not called
    // then.
    static std::unique_ptr<Task> launch(
        TaskDescription description, EndHandler handler, Failure& error = ignoredFailure());
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    // The handler is not called any more. A process that still runs is asked to end as terminate() does; the
    // default main context collects it when it ends.
    ~Task();

    // True until the handler is called.
    bool isRunning() const;
    // Asks the process to end (SIGTERM), and does not wait. Nothing when it has ended.
    void terminate();

private:
    class Run;

    explicit Task(std::shared_ptr<Run> run);

    std::shared_ptr<Run> run_;
};

} // namespace platform
