#include "CommandFilter/Program/KnownCertificates.h"

#include "Common/Utilities/URLFetch.h"
#include "Formats/OneLine.h"
#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <system_error>

namespace orvan {
namespace {

constexpr const char* kName = "orvan-certificates";
constexpr const char* kFilter = "/usr/lib/cups/filter/commandtoorvan";
constexpr std::size_t kMaximumSize = std::size_t{1} << 20U;
constexpr std::size_t kFingerprintSize = 32 * 3 - 1; // SHA-256, "AB:CD:..."

bool isFingerprint(std::string_view text) {
    return text.size() == kFingerprintSize &&
           text.find_first_not_of("0123456789ABCDEF:") == std::string_view::npos;
}

std::string inSmallLetters(std::string text) {
    std::ranges::transform(
        text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

// The open file, for this process alone until it is closed.
class LockedFile {
public:
    // errno says why it is not open.
    explicit LockedFile(const std::filesystem::path& file) : path_(file) {
        std::error_code ignored;
        std::filesystem::create_directories(file.parent_path(), ignored);
        file_ = platform::FileDescriptor(::open(file.c_str(),
            O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR));
        struct stat status {};
        // Another name of some other file would make that one writable for the folder's people.
        if (file_ &&
            (::fstat(file_.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink != 1)) {
            file_.reset();
            errno = EPERM;
        }
        if (!file_) return;
        // Whoever makes it, the scheduler's filters write to it: those who write to its folder.
        struct stat folder {};
        if (::stat(file.parent_path().c_str(), &folder) == 0 && (folder.st_mode & S_IWGRP) != 0 &&
            ::fchown(file_.get(), static_cast<uid_t>(-1), folder.st_gid) == 0)
            static_cast<void>(::fchmod(file_.get(), S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP));
        if (::flock(file_.get(), LOCK_EX) != 0) file_.reset();
    }

    explicit operator bool() const { return static_cast<bool>(file_); }
    const std::filesystem::path& path() const { return path_; }

    std::string text() const {
        std::string text(kMaximumSize, '\0');
        const ssize_t size = ::pread(file_.get(), text.data(), text.size(), 0);
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return text;
    }

    // Behind a line that was cut, on a line of its own.
    bool append(const std::string& line) const {
        const std::string before = text();
        const std::string bytes = (before.empty() || before.ends_with('\n') ? "" : "\n") + line;
        if (before.size() + bytes.size() > kMaximumSize) {
            errno = EFBIG;
            return false;
        }
        return ::write(file_.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    }

private:
    std::filesystem::path path_;
    platform::FileDescriptor file_;
};

// Why the file has not taken a line; errno says it.
std::string notRemembered(const std::string& server, const std::filesystem::path& file) {
    return "the certificate of " + server + " cannot be remembered in " + file.string() + ": " +
           std::strerror(errno);
}

// Nothing, or why the file has not taken the line.
platform::Failure remember(
    const LockedFile& file, const std::string& server, const std::string& fingerprint) {
    const bool isServer = !server.empty() && server.find_first_of(" \n") == std::string::npos;
    errno = EINVAL;
    if (isServer && isFingerprint(fingerprint) && file.append(server + ' ' + fingerprint + '\n'))
        return std::nullopt;
    return notRemembered(server, file.path());
}

std::string urlOf(const std::string& server) {
    if (server.find("://") == std::string::npos) return "https://" + server + "/";
    return server.starts_with("http://") ? "https" + server.substr(4) : server;
}

} // namespace

CertificateTable readCertificates(std::string_view text) {
    CertificateTable table;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos) return table; // it was not written to its end
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end + 1);
        const std::size_t space = line.find(' ');
        if (space == 0 || space == std::string_view::npos || !isFingerprint(line.substr(space + 1))) continue;
        table.insert_or_assign(std::string(line.substr(0, space)), line.substr(space + 1));
    }
    return table;
}

std::filesystem::path KnownCertificates::usualFile() {
    const auto variable = [](const char* name) -> std::filesystem::path {
        const char* const value = std::getenv(name);
        return value != nullptr ? value : "";
    };
    if (const auto scheduler = variable("CUPS_CACHEDIR"); !scheduler.empty()) return scheduler / kName;
    if (::geteuid() == 0) return std::filesystem::path("/var/cache/cups") / kName;
    const auto caches = variable("XDG_CACHE_HOME");
    return (caches.is_absolute() ? caches : variable("HOME") / ".cache") / "orvan" / kName;
}

CertificateVerdict KnownCertificates::examine(
    const std::string& server, const std::string& fingerprint) const {
    const std::string key = inSmallLetters(server);
    const LockedFile file(file_);
    if (!file) return {notRemembered(server, file_), false};
    const CertificateTable table = readCertificates(file.text());
    if (const auto known = table.find(key); known != table.end()) {
        if (known->second == fingerprint) return {};
        return {"its certificate is another one than before: its SHA-256 fingerprint is " + fingerprint +
                    " now and was " + known->second +
                    ". Nothing was sent to it. If the printer has a new certificate, take it as root: \"" +
                    kFilter + " --accept-certificate " + server + "\"",
            true};
    }
    return {remember(file, key, fingerprint), false};
}

platform::Failure KnownCertificates::accept(
    const std::string& server, const std::string& fingerprint, std::string* before) const {
    const std::string key = inSmallLetters(server);
    const LockedFile file(file_);
    if (!file) return notRemembered(server, file_);
    const CertificateTable table = readCertificates(file.text());
    const auto known = table.find(key);
    if (before != nullptr) *before = known != table.end() ? known->second : "";
    if (known != table.end() && known->second == fingerprint) return std::nullopt;
    return remember(file, key, fingerprint);
}

int acceptCertificate(const std::string& server) {
    const auto fail = [](const std::string& why) {
        std::cerr << "commandtoorvan: " << platform::onOneLine(why) << '\n';
        return 1;
    };
    if (::geteuid() != 0) return fail("only root accepts certificates for the print scheduler");
    FetchRequest request;
    request.url = urlOf(server);
    request.followsRedirects = false;
    std::string name;
    request.examineCertificate = [&name](const std::string& host, const std::string&) {
        name = host;
        return platform::Failure("seen"); // and nothing is sent
    };
    const FetchResult result = fetchDocument(request);
    if (result.uncheckedCertificate.empty())
        return fail(result.problem.empty() ? "the certificate of " + server +
                                                 " is one that the system trusts; nothing has to be accepted"
                                           : "no certificate of " + server + ": " + result.problem);
    std::string before;
    if (const auto failure = KnownCertificates().accept(name, result.uncheckedCertificate, &before))
        return fail(*failure);
    std::cout << "The certificate of " << name << " is accepted, its SHA-256 fingerprint is\n"
              << result.uncheckedCertificate << '\n';
    if (!before.empty() && before != result.uncheckedCertificate) std::cout << "and was\n" << before << '\n';
    return 0;
}

} // namespace orvan
