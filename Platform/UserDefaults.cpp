#include "Platform/UserDefaults.h"

#include "Formats/Unicode.h"
#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace platform {
namespace {

constexpr off_t kMaximumDomainSize = off_t{1024} * 1024;

std::string octal(mode_t mode) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "%04o", mode & 07777U);
    return text.data();
}

// Why the file is not used; nothing when it is.
Failure whyNot(const struct stat& file, const std::string& path) {
    const std::string prefix = path + " is not used: ";
    if (!S_ISREG(file.st_mode)) return prefix + "it is no regular file";
    if (file.st_uid != geteuid() && file.st_uid != 0) return prefix + "it belongs to somebody else";
    if ((file.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return prefix + "others may read or change it (mode " + octal(file.st_mode) + "; \"chmod 600 " +
               path + "\")";
    if (file.st_size > kMaximumDomainSize) return prefix + "it is larger than 1 MiB";
    return std::nullopt;
}

// Nothing when there is none, or it is not used.
std::optional<std::string> readDomainFile(const std::string& path, Failure& problem) {
    // O_NONBLOCK is for a pipe in the file's place, which would make open wait.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file) {
        if (errno != ENOENT && errno != ENOTDIR) problem = path + " cannot be read: " + std::strerror(errno);
        return std::nullopt;
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return std::nullopt;
    if (const Failure reason = whyNot(status, path)) {
        problem = reason;
        return std::nullopt;
    }

    // A file that grows meanwhile is cut, and hardly a property list then.
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t count = ::read(file.get(), bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    bytes.resize(size);
    return bytes;
}

} // namespace

std::vector<std::string> preferredLanguages() {
    std::vector<std::string> languages;
    for (const gchar* const* name = g_get_language_names(); *name != nullptr; ++name) {
        // Locale names are language[_territory][.codeset][@modifier]; the variants with a codeset repeat the
        // others.
        std::string tag = *name;
        if (tag == "C" || tag == "POSIX" || tag.find_first_of(".@") != std::string::npos) continue;
        std::replace(tag.begin(), tag.end(), '_', '-');
        if (std::find(languages.begin(), languages.end(), tag) == languages.end()) languages.push_back(tag);
    }
    return languages;
}

std::string fullUserName() {
    std::string name = g_get_real_name();
    // GLib's word for an account without a name.
    if (name == "Unknown") return {};
    if (findInvalidUTF8(name) == std::string::npos) return name;
    gchar* const converted = g_locale_to_utf8(name.c_str(), -1, nullptr, nullptr, nullptr);
    name = converted != nullptr ? converted : "";
    g_free(converted);
    return name;
}

std::string persistentDomainPath(std::string_view domain) {
    if (domain.empty() || domain.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos)
        return {};
    return std::string(g_get_user_config_dir()) + "/orvan/" + std::string(domain) + ".plist";
}

std::optional<PropertyList::Dictionary> persistentDomainForName(std::string_view domain, Failure& problem) {
    const std::string path = persistentDomainPath(domain);
    if (path.empty()) return std::nullopt;
    const std::optional<std::string> bytes = readDomainFile(path, problem);
    if (!bytes) return std::nullopt;
    std::optional<PropertyList> list = PropertyList::read(*bytes);
    if (!list || list->asDictionary() == nullptr) {
        problem = path + " is not used: it is no property list with a dictionary";
        return std::nullopt;
    }
    return std::move(*list->asDictionary());
}

} // namespace platform
