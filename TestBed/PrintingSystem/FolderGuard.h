// Removes a folder when its owner's process dies without having done so, by SIGKILL for example.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>

namespace orvan {

// A small process that waits on a pipe; the kernel closes the owner's end however the owner ends. An object
// that is destroyed takes the process away and leaves the folder alone.
class FolderGuard {
public:
    // Null when the process cannot be started; errno says why.
    static std::unique_ptr<FolderGuard> watch(const std::filesystem::path& folder);
    FolderGuard(const FolderGuard&) = delete;
    FolderGuard& operator=(const FolderGuard&) = delete;
    ~FolderGuard();

private:
    FolderGuard(pid_t pid, int pipe) : pid_(pid), pipe_(pipe) {}

    pid_t pid_;
    int pipe_;
};

} // namespace orvan
