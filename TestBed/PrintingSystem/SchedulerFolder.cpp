#include "TestBed/PrintingSystem/SchedulerFolder.h"

#include <grp.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <sstream>

namespace orvan {
namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 3> kProgramFolders = {
    "/usr/lib/cups", "/usr/libexec/cups", "/usr/local/lib/cups"};

constexpr const char* kProgramUser = "lp";

constexpr fs::perms kForAll = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                              fs::perms::others_read | fs::perms::others_exec;

// Everybody who can open the socket is an administrator here: the folder is the protection. Jobs and their
// documents are kept to be read back, and every change is written at once so that it survives a scheduler
// that is killed.
constexpr const char* kDaemonConfiguration = R"(LogLevel info
MaxLogSize 0
Browsing Off
BrowseLocalProtocols none
WebInterface No
DefaultAuthType None
DefaultPaperSize None
DirtyCleanInterval 0
IdleExitTimeout 0
PreserveJobHistory Yes
PreserveJobFiles Yes
MaxJobs 0
JobKillDelay 2
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  JobPrivateAccess all
  JobPrivateValues none
  SubscriptionPrivateAccess all
  SubscriptionPrivateValues none
  <Limit All>
    AuthType None
    Order allow,deny
    Allow all
  </Limit>
</Policy>
)";

std::string filesConfigurationText(const fs::path& folder, const SchedulerFolderOptions& options) {
    struct Entry {
        const char* keyword;
        const char* place;
    };
    constexpr std::array<Entry, 10> kPlaces = {
        {{"ServerRoot", "etc"}, {"RequestRoot", "spool"}, {"CacheDir", "cache"}, {"StateDir", "state"},
            {"TempDir", "spool/tmp"}, {"DocumentRoot", "documents"}, {"ServerBin", "programs"},
            {"ErrorLog", "log/error_log"}, {"AccessLog", "log/access_log"}, {"PageLog", "log/page_log"}}};
    std::ostringstream text;
    for (const Entry& entry : kPlaces)
        text << entry.keyword << ' ' << (folder / entry.place).string() << '\n';
    text << "FileDevice Yes\nSyncOnClose No\n";
    if (geteuid() == 0) text << "User " << kProgramUser << "\nGroup " << kProgramUser << '\n';
    for (const auto& [name, value] : options.programEnvironment)
        text << "SetEnv " << name << ' ' << value << '\n';
    return text.str();
}

fs::path systemProgramFolder() {
    for (const char* folder : kProgramFolders) {
        std::error_code error;
        if (fs::is_directory(fs::path(folder) / "filter", error)) return folder;
    }
    return {};
}

// The folder is private, or everybody could make queues that write files with the rights of its owner. A
// scheduler that runs as root has programs that run as kProgramUser: they may pass, without seeing what is
// there.
Failure admitPrograms(const fs::path& folder) {
    if (geteuid() != 0) return std::nullopt;
    const group* programs = getgrnam(kProgramUser);
    if (!programs || chown(folder.c_str(), 0, programs->gr_gid) != 0)
        return "The folder " + folder.string() + " could not be given to the group " + kProgramUser +
               ", as which CUPS runs its filters. Install the package cups-daemon, or run as an ordinary "
               "user.";
    fs::permissions(folder, fs::perms::owner_all | fs::perms::group_exec);
    return std::nullopt;
}

// The folder's own `kind` of programs starts as links to the machine's, so that others can join them.
void linkPrograms(const fs::path& system, const fs::path& own) {
    fs::create_directory(own);
    fs::permissions(own, kForAll);
    std::error_code error;
    for (const fs::directory_entry& program : fs::directory_iterator(system, error))
        fs::create_symlink(program.path(), own / program.path().filename());
}

void copyPrograms(const std::vector<fs::path>& programs, const fs::path& own) {
    for (const fs::path& program : programs) {
        const fs::path place = own / program.filename();
        fs::remove(place);
        fs::copy_file(program, place);
        fs::permissions(place, kForAll);
    }
}

void writeFile(const fs::path& path, const std::string& text) {
    std::ofstream stream(path, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) throw fs::filesystem_error("write", path, std::error_code(EIO, std::generic_category()));
}

} // namespace

std::unique_ptr<SchedulerFolder> SchedulerFolder::create(
    const SchedulerFolderOptions& options, Failure* failure) {
    std::string name = (options.parent / "orvan-XXXXXX").string();
    if (!mkdtemp(name.data())) {
        const int reason = errno;
        *failure = "A folder for the scheduler could not be made in " + options.parent.string() + ": " +
                   std::strerror(reason) + ". Name a folder that you may write to.";
        return nullptr;
    }
    std::unique_ptr<SchedulerFolder> folder(new SchedulerFolder(name, false));
    *failure = folder->fill(options);
    if (*failure) return nullptr;
    folder->keep_ = options.keep;
    return folder;
}

Failure SchedulerFolder::fill(const SchedulerFolderOptions& options) {
    if (socket().string().size() >= sizeof(sockaddr_un{}.sun_path))
        return "The scheduler's socket " + socket().string() +
               " has too long a path; use a shorter folder, /tmp.";
    const fs::path system = systemProgramFolder();
    if (system.empty())
        return "CUPS has no folder of filters on this machine (looked for /usr/lib/cups/filter). Install the "
               "packages cups-daemon and cups-filters.";
    try {
        if (Failure failure = admitPrograms(path_)) return failure;
        for (const char* name : {"etc", "etc/ppd", "spool", "spool/tmp", "cache", "state", "documents", "log",
                 "programs", "output", "home"})
            fs::create_directory(path_ / name);
        fs::permissions(path_ / "programs", kForAll);
        fs::permissions(home(), fs::perms::owner_all);
        for (const char* kind : {"filter", "backend", "daemon", "driver", "notifier", "monitor", "cgi-bin"})
            linkPrograms(system / kind, path_ / "programs" / kind);
        copyPrograms(options.extraFilters, path_ / "programs" / "filter");
        copyPrograms(options.extraBackends, path_ / "programs" / "backend");
        writeFile(daemonConfiguration(), "Listen " + socket().string() + '\n' + kDaemonConfiguration);
        writeFile(filesConfiguration(), filesConfigurationText(path_, options));
    } catch (const fs::filesystem_error& error) {
        return std::string("The scheduler's folder could not be filled: ") + error.what();
    }
    return std::nullopt;
}

SchedulerFolder::~SchedulerFolder() {
    if (keep_) return;
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string SchedulerFolder::errorLogTail(std::size_t lines) const {
    std::ifstream log(errorLog());
    std::deque<std::string> last;
    for (std::string line; std::getline(log, line);) {
        last.push_back(line);
        if (last.size() > lines) last.pop_front();
    }
    std::string text;
    for (const std::string& line : last)
        text += line + '\n';
    return text;
}

} // namespace orvan
