#include "Platform/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

// The header of glibc 2.36 does not say so itself.
extern "C" {
#include <sys/pidfd.h>
}

namespace platform {
namespace {

// Ignored signals stay ignored in a new program. These are the ones that applications, or libraries for
// them, ignore.
constexpr std::array<int, 7> kSignalsToReset = {SIGPIPE, SIGINT, SIGQUIT, SIGHUP, SIGTERM, SIGCHLD, SIGTSTP};

struct Pipe {
    FileDescriptor reader;
    FileDescriptor writer;

    bool open() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) return false;
        reader = FileDescriptor(ends[0]);
        writer = FileDescriptor(ends[1]);
        return keepOffStandardDescriptors(reader) && keepOffStandardDescriptors(writer);
    }

private:
    // In an application that has closed its standard descriptors a pipe may get their numbers, which are
    // about to be replaced in the child.
    static bool keepOffStandardDescriptors(FileDescriptor& end) {
        if (end.get() > STDERR_FILENO) return true;
        end = FileDescriptor(::fcntl(end.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        return static_cast<bool>(end);
    }
};

bool setNonBlocking(const FileDescriptor& end) {
    return ::fcntl(end.get(), F_SETFL, ::fcntl(end.get(), F_GETFL) | O_NONBLOCK) == 0;
}

// What becomes of descriptors and signals between fork and exec.
class SpawnSettings {
public:
    SpawnSettings(const FileDescriptor& standardInput, const FileDescriptor& standardError) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_adddup2(&actions_, standardInput.get(), STDIN_FILENO);
        ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions_, standardError.get(), STDERR_FILENO);
        ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
        ::posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigemptyset(&none);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        sigset_t reset;
        sigemptyset(&reset);
        for (const int number : kSignalsToReset)
            sigaddset(&reset, number);
        ::posix_spawnattr_setsigdefault(&attributes_, &reset);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    ~SpawnSettings() {
        ::posix_spawnattr_destroy(&attributes_);
        ::posix_spawn_file_actions_destroy(&actions_);
    }

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

// The null-terminated vector that exec takes. The texts are the strings' own.
std::vector<char*> vectorOf(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// 0, or the error's number.
int spawn(const TaskDescription& description, const SpawnSettings& settings, pid_t* pid) {
    std::vector<std::string> arguments{description.program};
    arguments.insert(arguments.end(), description.arguments.begin(), description.arguments.end());
    std::vector<std::string> environment;
    environment.reserve(description.environment.size());
    for (const auto& [name, value] : description.environment)
        environment.push_back(std::string(name).append(1, '=').append(value));
    return ::posix_spawn(pid, description.program.c_str(), settings.actions(), settings.attributes(),
        vectorOf(arguments).data(), vectorOf(environment).data());
}

bool isChangedByOthers(const struct stat& status) {
    return (status.st_uid != 0 && status.st_uid != ::geteuid()) ||
           (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

// Whether somebody other than root and this process's user could have put the program there. One that cannot
// be looked at is the system's to refuse.
bool isOfOthers(const std::string& program) {
    struct stat file {};
    struct stat folder {};
    const std::string parent = program.substr(0, program.rfind('/') + 1);
    return (::stat(program.c_str(), &file) == 0 && isChangedByOthers(file)) ||
           (::stat(parent.c_str(), &folder) == 0 && isChangedByOthers(folder) &&
               (folder.st_mode & S_ISVTX) == 0);
}

bool fail(Failure& error, const std::string& program, const std::string& why) {
    error = "cannot start \"" + program + "\": " + why;
    return false;
}

} // namespace

bool spawnChild(
    const TaskDescription& description, ChildPipes* pipes, FileDescriptor* process, Failure& error) {
    const std::string& program = description.program;
    if (!program.starts_with('/')) return fail(error, program, "its path is not absolute");
    if (isOfOthers(program))
        return fail(error, program, "others than you and root may change it or its folder");
    Pipe input;
    Pipe output;
    if (!input.open() || !output.open() || !setNonBlocking(input.writer) || !setNonBlocking(output.reader))
        return fail(error, program, std::strerror(errno));

    pid_t pid = 0;
    const int problem = spawn(description, SpawnSettings(input.reader, output.writer), &pid);
    if (problem != 0) return fail(error, program, std::strerror(problem));
    *process = FileDescriptor(::pidfd_open(pid, 0));
    // ESRCH: it has ended, in an application that has its children collected by the kernel.
    if (!*process && errno != ESRCH) {
        const int reason = errno;
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
        return fail(error, program, std::strerror(reason));
    }
    *pipes = {std::move(input.writer), std::move(input.reader), std::move(output.reader)};
    return true;
}

void reapChild(const FileDescriptor& process) {
    if (!process) return;
    siginfo_t ignored{};
    ::waitid(P_PIDFD, static_cast<id_t>(process.get()), &ignored, WEXITED | WNOHANG);
}

void terminateChild(const FileDescriptor& process) {
    if (process) ::pidfd_send_signal(process.get(), SIGTERM, nullptr, 0);
}

} // namespace platform
