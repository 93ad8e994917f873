#include "TestBed/PrintingSystem/FolderGuard.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

namespace orvan {
namespace {

// More than one try, because a program of the dying scheduler may still be writing there.
constexpr const char* kScript = R"(trap '' HUP INT TERM
read -r nothing
tries=0
while [ -e "$1" ] && [ $tries -lt 50 ]; do
    rm -rf -- "$1"
    tries=$((tries + 1))
    sleep 0.1
done)";

} // namespace

std::unique_ptr<FolderGuard> FolderGuard::watch(const std::filesystem::path& folder) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return nullptr;
    std::array<std::string, 5> words = {"sh", "-c", kScript, "sh", folder.string()};
    std::array<char*, 6> arguments{};
    for (std::size_t position = 0; position < words.size(); ++position)
        arguments[position] = words[position].data();
    std::string path = "PATH=/usr/bin:/bin";
    std::array<char*, 2> environment = {path.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t pid = 0;
    const int error =
        posix_spawn(&pid, "/bin/sh", &actions, &attributes, arguments.data(), environment.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[0]);
    if (error == 0) return std::unique_ptr<FolderGuard>(new FolderGuard(pid, ends[1]));
    close(ends[1]);
    errno = error;
    return nullptr;
}

FolderGuard::~FolderGuard() {
    kill(pid_, SIGKILL);
    close(pipe_);
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR)
        continue;
}

} // namespace orvan
