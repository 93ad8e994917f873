// The scheduler's process: cupsd in the foreground, as a child that never outlives its owner.
#pragma once

#include "TestBed/Session/Failure.h"

#include <sys/types.h>

#include <chrono>
#include <filesystem>

namespace orvan {

// Used from one thread. The kernel ends the scheduler when the thread that called start() ends, so that is a
// thread which lives as long as the scheduler is wanted.
class SchedulerProcess {
public:
    // The machine's cupsd; empty when there is none.
    static std::filesystem::path findProgram();

    SchedulerProcess() = default;
    SchedulerProcess(const SchedulerProcess&) = delete;
    SchedulerProcess& operator=(const SchedulerProcess&) = delete;
    // As terminate().
    ~SchedulerProcess();

    // Starts cupsd, in a process group of its own so that an interrupt key pressed in the terminal is not for
    // it. Its standard output and error go to the file `messages`. Does not wait until it answers.
    Failure start(const std::filesystem::path& program, const std::filesystem::path& daemonConfiguration,
        const std::filesystem::path& filesConfiguration, const std::filesystem::path& messages);

    // 0 when there is none.
    pid_t pid() const { return pid_; }
    // True while it runs or is suspended; collects it when it has ended.
    bool isRunning();

    // Asks it to end, and waits; a scheduler that takes longer than `patience`, or is suspended, is killed.
    void terminate(std::chrono::milliseconds patience = std::chrono::seconds(5));
    // SIGKILL, and waits until it is gone.
    void kill();
    // SIGSTOP and SIGCONT: it keeps its socket, which takes connections that nobody answers.
    void suspend();
    void resume();

private:
    bool collect(int flags);

    pid_t pid_ = 0;
};

} // namespace orvan
