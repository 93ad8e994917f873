#include "Orvan/Doctor/SchedulerFiles.h"

#include "Scheduler/PrintScheduler.h"

#include <cups/cups.h>
#include <grp.h>
#include <pwd.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace orvan {
namespace {

namespace fs = std::filesystem;

constexpr const char* kProgramUser = "lp";
constexpr const char* kSpoolFolder = "/var/spool/cups";

fs::path serverRoot() {
    const char* const root = std::getenv("CUPS_SERVERROOT");
    return root != nullptr ? root : "/etc/cups";
}

// A directive of cups-files.conf(5).
std::string directive(const char* name, const char* otherwise) {
    std::ifstream file(serverRoot() / "cups-files.conf");
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string keyword;
        std::string value;
        if (words >> keyword >> value && strcasecmp(keyword.c_str(), name) == 0) return value;
    }
    return otherwise;
}

// As whom filters run. Nothing when the system does not know them.
struct Identity {
    uid_t user;
    gid_t group;
};
std::optional<Identity> identityOfFilters() {
    const std::string userName = directive("User", kProgramUser);
    const std::string groupName = directive("Group", kProgramUser);
    const passwd* const user = getpwnam(userName.c_str());
    const group* const group = getgrnam(groupName.c_str());
    if (user == nullptr || group == nullptr) return std::nullopt;
    // One that is not root cannot become somebody else.
    const uid_t scheduler = schedulerUser();
    return Identity{scheduler == 0 ? user->pw_uid : scheduler, group->gr_gid};
}

bool mayRead(const Identity& who, const struct stat& file) {
    if (who.user == file.st_uid) return (file.st_mode & S_IRUSR) != 0;
    return (file.st_mode & (who.group == file.st_gid ? S_IRGRP : S_IROTH)) != 0;
}

// Where the file system begins that the folder is on.
fs::path mountPoint(fs::path folder) {
    struct stat inner {};
    struct stat outer {};
    while (folder.has_relative_path() && stat(folder.c_str(), &inner) == 0 &&
           stat(folder.parent_path().c_str(), &outer) == 0 && inner.st_dev == outer.st_dev)
        folder = folder.parent_path();
    return folder;
}

} // namespace

uid_t schedulerUser() {
    struct stat socket {};
    return *cupsServer() == '/' && stat(cupsServer(), &socket) == 0 ? socket.st_uid : 0;
}

std::optional<Finding> examineFileOfPPD(const std::string& queue) {
    struct stat status {};
    const std::string file = (serverRoot() / "ppd" / (queue + ".ppd")).string();
    if (!isSchedulerHere() || stat(file.c_str(), &status) != 0) return std::nullopt;
    const auto identity = identityOfFilters();
    if (!identity || mayRead(*identity, status)) return std::nullopt;
    return problem("the scheduler's filters may not read the queue's PPD " + file,
        "\"sudo chmod 644 " + file + "\" mends it.");
}

Finding examineSpool() {
    const std::string said = "the scheduler has no room for a job";
    if (!isSchedulerHere())
        return problem(said,
            "Make room on the disk of the spool folder (" + std::string(kSpoolFolder) + ") on its computer.");
    const std::string spool = directive("RequestRoot", kSpoolFolder);
    const std::string disk = mountPoint(spool).string();
    struct statvfs state {};
    if (statvfs(spool.c_str(), &state) != 0)
        return problem(said, "Make room on the disk of its spool folder " + spool + ".");
    constexpr std::uintmax_t kKilobyte = 1024;
    const std::uintmax_t free = std::uintmax_t{state.f_bavail} * state.f_frsize / kKilobyte;
    const bool hasFiles = state.f_files == 0 || state.f_favail > 0;
    return problem(said + ": the disk at " + disk + " has " +
                       (hasFiles ? std::to_string(free) + " KiB left" : "no files left"),
        "Make room on the disk at " + disk + ", which has the spool folder " + spool + ".");
}

} // namespace orvan
