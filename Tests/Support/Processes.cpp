#include "Tests/Support/Processes.h"

#include "Tests/Support/TempFolder.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>

namespace orvan {
namespace {

// When it has ended; -1 when there is no such child.
int exitCodeOf(pid_t child) {
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Runs `body` in a child with its output and errors in files.
ProgramEnd runChild(const Environment& environment, const std::function<void()>& body) {
    constexpr unsigned kPatience = 500;
    const TempFolder folder;
    const std::filesystem::path output = folder.path() / "output";
    const std::filesystem::path errors = folder.path() / "errors";
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        alarm(kPatience);
        changeEnvironment(environment);
        dup2(open(output.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDOUT_FILENO);
        dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDERR_FILENO);
        body();
        _exit(127);
    }
    const int code = exitCodeOf(child);
    if (code < 0) return {};
    return {code, contents(output), contents(errors)};
}

} // namespace

void changeEnvironment(const Environment& environment) {
    for (const auto& [name, value] : environment)
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
}

void runInstead(const std::vector<std::string>& command) {
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execv(words[0], words.data());
    _exit(127);
}

ProgramEnd runProgram(const std::vector<std::string>& command, const Environment& environment) {
    return runChild(environment, [&command] { runInstead(command); });
}

BackgroundProcess::BackgroundProcess(
    const std::vector<std::string>& command, const std::function<void()>& prepare)
    : process_(fork()) {
    if (process_ != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (prepare) prepare();
    runInstead(command);
}

int BackgroundProcess::end(int signal) {
    if (process_ < 0) return -1;
    kill(process_, signal);
    return exitCodeOf(std::exchange(process_, -1));
}

bool eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(100);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

std::string inChild(const Environment& environment, const std::function<std::string()>& body) {
    const ProgramEnd end = runChild(environment, [&body] {
        const std::string answer = body();
        const bool written = write(STDOUT_FILENO, answer.data(), answer.size()) == ssize_t(answer.size());
        _exit(written ? 0 : 1);
    });
    return end.exitCode == 0 ? end.output : "ended with " + std::to_string(end.exitCode) + ": " + end.errors;
}

} // namespace orvan
