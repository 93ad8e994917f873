// The folder in which a scheduler of one's own lives: its configuration, programs, spool, logs and socket.
#pragma once

#include "TestBed/Session/Failure.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvan {

struct SchedulerFolderOptions {
    // Programs that join the machine's own filters and backends, under their own file names. They are copied,
    // so that the scheduler finds owner and mode as it demands them.
    std::vector<std::filesystem::path> extraFilters;
    std::vector<std::filesystem::path> extraBackends;
    // Environment of every filter and backend, beyond what the scheduler itself gives them.
    std::map<std::string, std::string> programEnvironment;
    // Where the folder is made. The socket's path has to fit sockaddr_un, about 100 bytes.
    std::filesystem::path parent = "/tmp";
    // The folder stays when its object goes.
    bool keep = false;
};

// Not shared between threads.
class SchedulerFolder {
public:
    // Null, and *failure says why, when the folder cannot be made; nothing is left behind then.
    static std::unique_ptr<SchedulerFolder> create(const SchedulerFolderOptions& options, Failure* failure);
    SchedulerFolder(const SchedulerFolder&) = delete;
    SchedulerFolder& operator=(const SchedulerFolder&) = delete;
    ~SchedulerFolder();

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path socket() const { return path_ / "socket"; }
    std::filesystem::path daemonConfiguration() const { return path_ / "etc" / "cupsd.conf"; }
    std::filesystem::path filesConfiguration() const { return path_ / "etc" / "cups-files.conf"; }
    std::filesystem::path configurationFolder() const { return path_ / "etc"; }
    std::filesystem::path stateFolder() const { return path_ / "state"; }
    std::filesystem::path spool() const { return path_ / "spool"; }
    std::filesystem::path errorLog() const { return path_ / "log" / "error_log"; }
    // A home of the clients' own, empty at first, for their owner alone.
    std::filesystem::path home() const { return path_ / "home"; }
    // Where the printed output of a queue goes whose device is a file.
    std::filesystem::path output() const { return path_ / "output"; }

    // The last lines of the error log, each with a line feed; empty when there are none.
    std::string errorLogTail(std::size_t lines) const;

private:
    SchedulerFolder(std::filesystem::path path, bool keep) : path_(std::move(path)), keep_(keep) {}
    Failure fill(const SchedulerFolderOptions& options);

    std::filesystem::path path_;
    bool keep_;
};

} // namespace orvan
