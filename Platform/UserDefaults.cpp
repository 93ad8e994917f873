#include "Platform/UserDefaults.h"

#include "Formats/Unicode.h"
#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace platform {
namespace {

constexpr off_t kMaximumDomainSize = off_t{1024} * 1024;

bool isTrustworthy(const struct stat& file) {
    return S_ISREG(file.st_mode) && (file.st_uid == geteuid() || file.st_uid == 0) &&
           (file.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Nothing when the file is not trustworthy, too large, or cannot be read.
std::optional<std::string> readDomainFile(const std::string& path) {
    // O_NONBLOCK is for a pipe in the file's place, which would make open wait.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !isTrustworthy(status)) return std::nullopt;
    if (status.st_size > kMaximumDomainSize) return std::nullopt;

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

std::optional<PropertyList::Dictionary> persistentDomainForName(std::string_view domain) {
    const std::string path = persistentDomainPath(domain);
    if (path.empty()) return std::nullopt;
    const std::optional<std::string> bytes = readDomainFile(path);
    if (!bytes) return std::nullopt;
    std::optional<PropertyList> list = PropertyList::read(*bytes);
    if (!list || list->asDictionary() == nullptr) return std::nullopt;
    return std::move(*list->asDictionary());
}

} // namespace platform
