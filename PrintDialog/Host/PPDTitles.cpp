#include "PrintDialog/Host/PPDTitles.h"

#include "Common/PPDUtilities.h"

#include <cups/file.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

namespace orvan {
namespace {

struct NamedLanguage {
    std::string_view version;
    const char* language;
};
// The names of *LanguageVersion for languages that people see here.
constexpr std::array<NamedLanguage, 7> kLanguages{{
    {"English", "en"},
    {"German", "de"},
    {"French", "fr"},
    {"Spanish", "es"},
    {"Italian", "it"},
    {"Dutch", "nl"},
    {"Japanese", "ja"},
}};
constexpr const char* kOtherwise = "en";

std::string ownLanguage(const ppd_file_t& record) {
    const std::string_view version = record.lang_version != nullptr ? record.lang_version : "";
    const auto found = std::ranges::find(kLanguages, version, &NamedLanguage::version);
    return found != kLanguages.end() ? found->language : kOtherwise;
}

// Tags have "-" where a PPD has "_".
std::string nameInPPD(std::string language) {
    std::ranges::replace(language, '-', '_');
    return language;
}

bool hasTitlesIn(ppd_file_t& record, const std::string& language) {
    const ppd_attr_t* const attribute = ppdFindAttr(&record, "cupsLanguages", nullptr);
    if (attribute == nullptr || attribute->value == nullptr) return false;
    std::string_view names = attribute->value;
    const std::string wanted = nameInPPD(language);
    while (!names.empty()) {
        const std::size_t end = std::min(names.find_first_of(" \t"), names.size());
        if (names.substr(0, end) == wanted) return true;
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return false;
}

// A text of the format: "<C3A9>" stands for the bytes of these hexadecimal numbers.
std::string decoded(std::string_view text) {
    std::string plain;
    bool isHex = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isHex) {
            isHex = text[i] == '<';
            if (!isHex) plain += text[i];
            continue;
        }
        unsigned byte = 0;
        const char* const digits = text.data() + i;
        const auto size = std::min<std::ptrdiff_t>(2, text.data() + text.size() - digits);
        const auto [end, problem] = std::from_chars(digits, digits + size, byte, 16);
        if (problem == std::errc() && end == digits + 2) {
            plain += static_cast<char>(byte);
            ++i;
        } else if (text[i] == '>') {
            isHex = false;
        }
    }
    return plain;
}

template <std::size_t size>
void setTitle(char (&field)[size], const std::string& title) {
    if (title.empty()) return;
    std::memset(field, 0, size);
    std::memcpy(field, title.data(), std::min(title.size(), size - 1));
}

// One line of titles, behind its "*fr.".
struct TitleLine {
    std::string keyword;
    std::string choice; // or the option, where the keyword is kTranslation
    std::string title;
};
constexpr std::string_view kTranslation = "Translation";

std::optional<TitleLine> titleLine(std::string_view text) {
    constexpr auto npos = std::string_view::npos;
    const std::size_t slash = text.find('/');
    const std::size_t space = text.find_first_of(" \t");
    if (slash == npos || space == npos || space > slash) return std::nullopt;
    const std::size_t choice = text.find_first_not_of(" \t", space);
    const std::size_t end = text.find(':', slash);
    if (end == npos) return std::nullopt;
    return TitleLine{std::string(text.substr(0, space)), std::string(text.substr(choice, slash - choice)),
        decoded(text.substr(slash + 1, end - slash - 1))};
}

void setTitle(ppd_file_t& record, const TitleLine& line) {
    const bool isOption = line.keyword == kTranslation;
    ppd_option_t* const option = ppdFindOption(&record, (isOption ? line.choice : line.keyword).c_str());
    if (option == nullptr) return;
    if (isOption) return setTitle(option->text, line.title);
    if (ppd_choice_t* const choice = ppdFindChoice(option, line.choice.c_str()))
        setTitle(choice->text, line.title);
}

struct CloseFile {
    void operator()(cups_file_t* file) const { cupsFileClose(file); }
};

} // namespace

std::string languageOf(
    ppd_file_t& record, const std::vector<std::string>& preferred, const std::vector<std::string>& offered) {
    std::string own = ownLanguage(record);
    for (const std::string& language : preferred) {
        if (std::ranges::find(offered, language) == offered.end()) continue;
        if (language == own || hasTitlesIn(record, language)) return language;
    }
    return own;
}

void setTitles(ppd_file_t& record, const std::string& language, int descriptor) {
    if (language == ownLanguage(record)) return;
    ::lseek(descriptor, 0, SEEK_SET);
    const std::unique_ptr<cups_file_t, CloseFile> file(
        cupsFileOpenFd(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0), "r"));
    if (file == nullptr) return;
    const std::string prefix = "*" + nameInPPD(language) + ".";
    std::array<char, 1024> buffer{};
    while (cupsFileGets(file.get(), buffer.data(), buffer.size()) != nullptr) {
        const std::string_view text = buffer.data();
        if (!text.starts_with(prefix)) continue;
        if (const auto line = titleLine(text.substr(prefix.size()))) setTitle(record, *line);
    }
}

} // namespace orvan
