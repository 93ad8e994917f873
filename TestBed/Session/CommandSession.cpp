#include "TestBed/Session/CommandSession.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace orvan {
namespace {

constexpr int kSignalExitBase = 128;

Failure spawn(
    const std::vector<std::string>& command, const sigset_t& signals, const sigset_t& defaults, pid_t* pid) {
    std::vector<std::string> words = command;
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &signals);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const int error = posix_spawnp(pid, arguments.front(), nullptr, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error == 0) return std::nullopt;
    return "The command " + command.front() + " could not be run: " + std::strerror(error) + '.';
}

// The terminal's interrupt key has reached the command already.
bool isFromTerminal(const siginfo_t& signal) {
    return signal.si_code == SI_KERNEL;
}

} // namespace

CommandSession::CommandSession() {
    sigemptyset(&awaited_);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD})
        sigaddset(&awaited_, signal);
    sigprocmask(SIG_BLOCK, &awaited_, &previous_);
    sigemptyset(&defaults_);
    struct sigaction action {};
    if (sigaction(SIGPIPE, nullptr, &action) == 0 && action.sa_handler == SIG_DFL)
        sigaddset(&defaults_, SIGPIPE);
}

Failure CommandSession::run(const std::vector<std::string>& command, int* exitCode) const {
    pid_t pid = 0;
    if (Failure failure = spawn(command, previous_, defaults_, &pid)) return failure;
    int status = 0;
    bool asked = false;
    while (waitpid(pid, &status, WNOHANG) != pid) {
        siginfo_t signal{};
        if (sigwaitinfo(&awaited_, &signal) < 0 || signal.si_signo == SIGCHLD) continue;
        if (asked || !isFromTerminal(signal)) kill(pid, asked ? SIGKILL : signal.si_signo);
        asked = true;
    }
    *exitCode = WIFSIGNALED(status) ? kSignalExitBase + WTERMSIG(status) : WEXITSTATUS(status);
    return std::nullopt;
}

bool CommandSession::waitForSignal(const std::function<bool()>& isServing) const {
    while (isServing()) {
        siginfo_t signal{};
        if (sigwaitinfo(&awaited_, &signal) > 0 && signal.si_signo != SIGCHLD) return true;
    }
    return false;
}

} // namespace orvan
