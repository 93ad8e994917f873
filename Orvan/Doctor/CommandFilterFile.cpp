#include "Orvan/Doctor/CommandFilterFile.h"

#include "Orvan/Doctor/SchedulerFiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

namespace orvan {
namespace {

namespace fs = std::filesystem;

bool isChangedByOthers(const struct stat& status) {
    return (status.st_uid != 0 && status.st_uid != schedulerUser()) ||
           (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

Finding examineFile(const fs::path& file) {
    struct stat status {};
    struct stat folder {};
    const std::string name = file.string();
    if (stat(file.c_str(), &status) != 0)
        return problem("the command filter " + name + " is not there: " + std::strerror(errno), kReinstall);
    if (!S_ISREG(status.st_mode)) return problem(name + " is no program", kReinstall);
    const bool hasOwnersRights = (status.st_mode & S_ISUID) != 0;
    if (isChangedByOthers(status) || hasOwnersRights)
        return problem((hasOwnersRights ? name + " runs with its owner's rights"
                                        : "others than root may change " + name) +
                           ", so the scheduler does not run it",
            "\"sudo chown root:root " + name + "\" and \"sudo chmod 755 " + name + "\" mend it.");
    if ((status.st_mode & S_IXOTH) == 0)
        return problem(
            "the scheduler's user may not run " + name, "\"sudo chmod 755 " + name + "\" mends it.");
    const std::string parent = file.parent_path().string();
    if (stat(parent.c_str(), &folder) == 0 && isChangedByOthers(folder) && (folder.st_mode & S_ISVTX) == 0)
        return problem("others than root may change the folder " + parent + " of the command filter",
            "\"sudo chown root:root " + parent + "\" and \"sudo chmod 755 " + parent + "\" mend it.");
    return ok(name + " is there, and only root may change it");
}

// A name in the scheduler's folder, where that is known.
std::optional<fs::path> placeOf(const std::string& filter) {
    if (filter.starts_with('/')) return filter;
    const char* const own = std::getenv("CUPS_SERVERBIN");
    const std::array<std::string, 2> folders{own != nullptr ? own : "", "/usr/lib/cups"};
    std::error_code ignored;
    for (const std::string& folder : folders)
        if (const fs::path file = fs::path(folder) / "filter" / filter;
            !folder.empty() && fs::exists(file, ignored))
            return file;
    return std::nullopt;
}

bool says(const SchedulerQueue& queue, const char* reason) {
    return std::ranges::find(queue.reasons, reason) != queue.reasons.end();
}

} // namespace

Finding examineCommandFilter(const std::string& filter, const SchedulerQueue& queue) {
    const std::optional<fs::path> file = isSchedulerHere() ? placeOf(filter) : std::nullopt;
    if (file) return examineFile(*file);
    if (says(queue, "cups-missing-filter-warning"))
        return problem(
            "the scheduler misses a filter of the queue; the command filter is " + filter, kReinstall);
    if (says(queue, "cups-insecure-filter-warning"))
        return problem("the scheduler refuses a filter of the queue that others than root may change; the "
                       "command filter is " +
                           filter,
            "On the scheduler's computer give the filter to root, with the mode 755.");
    return isSchedulerHere()
               ? ok("the scheduler has nothing against " + filter)
               : notChecked("the scheduler is on another computer; it has nothing against " + filter);
}

} // namespace orvan
