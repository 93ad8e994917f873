#include "TestBed/PrintingSystem/SchedulerProcess.h"

#include <fcntl.h>
#include <glib.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <thread>

namespace orvan {
namespace {

constexpr std::array<const char*, 3> kUsualPlaces = {
    "/usr/sbin/cupsd", "/sbin/cupsd", "/usr/local/sbin/cupsd"};
constexpr std::chrono::milliseconds kStartInterval(5);

// Runs between fork and exec: calls only what POSIX allows there.
[[noreturn]] void becomeScheduler(
    char* const* arguments, char* const* environment, const char* messages, pid_t owner) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != owner) _exit(127);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int output = open(messages, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (dup2(input, 0) < 0 || dup2(output, 1) < 0 || dup2(output, 2) < 0) _exit(127);
    close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    execve(arguments[0], arguments, environment);
    _exit(127);
}

} // namespace

std::filesystem::path SchedulerProcess::findProgram() {
    for (const char* place : kUsualPlaces)
        if (access(place, X_OK) == 0) return place;
    gchar* found = g_find_program_in_path("cupsd");
    std::filesystem::path program = found ? found : "";
    g_free(found);
    return program;
}

SchedulerProcess::~SchedulerProcess() {
    terminate();
}

Failure SchedulerProcess::start(const std::filesystem::path& program,
    const std::filesystem::path& daemonConfiguration, const std::filesystem::path& filesConfiguration,
    const std::filesystem::path& messages) {
    std::array<std::string, 6> words = {
        program.string(), "-f", "-c", daemonConfiguration.string(), "-s", filesConfiguration.string()};
    std::array<char*, 7> arguments{};
    for (std::size_t position = 0; position < words.size(); ++position)
        arguments[position] = words[position].data();
    // A fresh environment: the owner's CUPS_SERVER and locale are not for the scheduler and its filters.
    std::string path = "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
    std::array<char*, 2> environment = {path.data(), nullptr};
    const std::string messagesPath = messages.string();
    const pid_t owner = getpid();
    const pid_t child = fork();
    if (child < 0) return "The scheduler could not be started: " + std::string(std::strerror(errno)) + '.';
    if (child == 0) becomeScheduler(arguments.data(), environment.data(), messagesPath.c_str(), owner);
    pid_ = child;
    return std::nullopt;
}

// True when there is no process any more.
bool SchedulerProcess::collect(int flags) {
    if (pid_ == 0) return true;
    pid_t answer = 0;
    do
        answer = waitpid(pid_, nullptr, flags);
    while (answer < 0 && errno == EINTR);
    if (answer == 0) return false;
    pid_ = 0;
    return true;
}

bool SchedulerProcess::isRunning() {
    return !collect(WNOHANG);
}

void SchedulerProcess::terminate(std::chrono::milliseconds patience) {
    if (!isRunning()) return;
    ::kill(pid_, SIGTERM);
    ::kill(pid_, SIGCONT);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (isRunning()) {
        if (std::chrono::steady_clock::now() >= deadline) return kill();
        std::this_thread::sleep_for(kStartInterval);
    }
}

void SchedulerProcess::kill() {
    if (!isRunning()) return;
    ::kill(pid_, SIGKILL);
    collect(0);
}

void SchedulerProcess::suspend() {
    if (!isRunning()) return;
    ::kill(pid_, SIGSTOP);
    siginfo_t stopped{};
    waitid(P_PID, static_cast<id_t>(pid_), &stopped, WSTOPPED | WEXITED | WNOWAIT);
}

void SchedulerProcess::resume() {
    if (isRunning()) ::kill(pid_, SIGCONT);
}

} // namespace orvan
