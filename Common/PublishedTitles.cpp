#include "Common/PublishedTitles.h"

#include "Formats/TextEncoding.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <memory>

namespace orvan {
namespace {

constexpr std::string_view kOption = "MediaType ";
constexpr std::string_view kCustomType = "CustomType";
constexpr std::string_view kSaved = "*OVNTitle ";
constexpr const char* kSavedKeyword = "OVNTitle";
constexpr std::string_view kEncodingKeyword = "*LanguageEncoding:";
constexpr std::string_view kSavedEncoding = "LanguageEncoding";
constexpr std::string_view kUTF8 = "UTF-8";
constexpr std::size_t kLongestTitle = 79; // the format has 80; libcups leaves the last one out
constexpr std::size_t kLongestLine = 255;
constexpr std::string_view kForbidden = ":/\"<>";

struct Encoding {
    std::string_view inPPD;
    const char* charset;
};
constexpr std::array<Encoding, 3> kEncodings{{
    {"ISOLatin1", "ISO-8859-1"},
    {"WindowsANSI", "CP1252"},
    {kUTF8, "UTF-8"},
}};

// With their ends.
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        lines.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return lines;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line;
    return text;
}

std::string hexOf(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string hex;
    for (const char byte : bytes) {
        hex += kDigits[static_cast<unsigned char>(byte) >> 4U];
        hex += kDigits[static_cast<unsigned char>(byte) & 0xFU];
    }
    return hex;
}

std::string bytesOf(std::string_view hex) {
    constexpr int kHexadecimal = 16;
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        unsigned byte = 0;
        std::from_chars(hex.data() + i, hex.data() + i + 2, byte, kHexadecimal);
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

bool needsHex(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < ' ' || byte == 0x7F || kForbidden.find(character) != std::string_view::npos;
}

// A title of the format, of at most so many bytes.
std::string encoded(std::string_view name, std::size_t room) {
    for (std::string_view rest = platform::prefixOfUTF8(name, kLongestTitle);;
         rest = platform::prefixOfUTF8(rest, rest.size() - 1)) {
        std::string text;
        for (const char character : rest)
            text += needsHex(character) ? "<" + hexOf({&character, 1}) + ">" : std::string(1, character);
        if (text.size() <= room || rest.empty()) return text;
    }
}

// A line that gives a custom paper a title: "*de.MediaType CustomType3/Title: ...".
struct TitleLine {
    std::string language; // "de.", or "" for the PPD's own
    std::string choice;
    std::size_t begin = 0; // of "/Title", which may be nothing
    std::size_t end = 0;
    std::string title;

    std::string key() const { return language + choice; }
};

std::optional<TitleLine> titleLine(const std::string& line) {
    if (!line.starts_with('*')) return std::nullopt;
    TitleLine found;
    const std::size_t option = line.find(kOption);
    if (option == std::string::npos || option > line.find_first_of(" :")) return std::nullopt;
    found.language = line.substr(1, option - 1);
    if (!found.language.empty() && !found.language.ends_with('.')) return std::nullopt;
    const std::size_t choice = option + kOption.size();
    found.end = line.find(':', choice);
    if (found.end == std::string::npos) return std::nullopt;
    found.begin = std::min(line.find('/', choice), found.end);
    found.choice = line.substr(choice, found.begin - choice);
    if (!found.choice.starts_with(kCustomType)) return std::nullopt;
    found.title = line.substr(found.begin, found.end - found.begin);
    return found;
}

std::string savedLine(const std::string& key, std::string_view value) {
    return std::string(kSaved).append(key).append(": \"").append(hexOf(value)).append("\"\n");
}

// The saved titles, by language and choice, which are taken out of the lines.
std::map<std::string, std::string> takeSaved(std::vector<std::string>& lines) {
    std::map<std::string, std::string> saved;
    std::erase_if(lines, [&saved](const std::string& line) {
        if (!line.starts_with(kSaved)) return false;
        const std::size_t colon = std::min(line.find(':'), line.size());
        const std::size_t begin = std::min(line.find('"', colon), line.size() - 1) + 1;
        const std::size_t end = std::min(line.find('"', begin), line.size());
        saved[line.substr(kSaved.size(), colon - kSaved.size())] = bytesOf(line.substr(begin, end - begin));
        return true;
    });
    return saved;
}

bool isASCII(std::string_view text) {
    return std::ranges::all_of(
        text, [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

// Titles in other languages are in UTF-8 in any case.
bool isTranslation(const std::string& line) {
    const std::size_t end = line.find_first_of(" :");
    const std::size_t dot = line.find('.');
    return line.starts_with('*') && dot != std::string::npos && dot < end;
}

std::string encodingIn(const std::vector<std::string>& lines) {
    for (const std::string& line : lines)
        if (line.starts_with(kEncodingKeyword)) {
            const std::size_t begin = line.find_first_not_of(" \t", kEncodingKeyword.size());
            const std::size_t end = line.find_last_not_of(" \t\r\n");
            return begin <= end ? line.substr(begin, end + 1 - begin) : std::string();
        }
    return std::string(kUTF8);
}

// False when that cannot be.
bool convert(std::vector<std::string>& lines, const std::string& from, const std::string& to) {
    const auto source = std::ranges::find(kEncodings, from, &Encoding::inPPD);
    const auto target = std::ranges::find(kEncodings, to, &Encoding::inPPD);
    if (source == kEncodings.end() || target == kEncodings.end()) return false;
    for (std::string& line : lines) {
        if (line.starts_with(kEncodingKeyword)) {
            line.replace(line.find(from, kEncodingKeyword.size()), from.size(), to);
        } else if (!isASCII(line) && !isTranslation(line)) {
            gsize size = 0;
            const std::unique_ptr<gchar, decltype(&g_free)> text(
                g_convert(line.data(), static_cast<gssize>(line.size()), target->charset, source->charset,
                    nullptr, &size, nullptr),
                g_free);
            if (text == nullptr) return false;
            line.assign(text.get(), size);
        }
    }
    return true;
}

std::vector<std::string> asItWas(const std::string& ppd) {
    std::vector<std::string> lines = linesOf(ppd);
    const auto saved = takeSaved(lines);
    for (std::string& line : lines)
        if (const auto found = titleLine(line))
            if (const auto title = saved.find(found->key()); title != saved.end())
                line.replace(found->begin, found->end - found->begin, title->second);
    if (const auto encoding = saved.find(std::string(kSavedEncoding)); encoding != saved.end())
        convert(lines, std::string(kUTF8), encoding->second);
    return lines;
}

} // namespace

std::string withoutPublishedTitles(const std::string& ppd) {
    return joined(asItWas(ppd));
}

std::optional<std::string> withPublishedTitles(
    const std::string& ppd, const std::vector<PaperTitle>& papers, platform::Failure& error) {
    std::vector<std::string> lines = asItWas(ppd);
    const std::string encoding = encodingIn(lines);
    std::string saved;
    const bool needsUTF8 =
        !std::ranges::all_of(papers, [](const PaperTitle& paper) { return isASCII(paper.name); });
    if (needsUTF8 && encoding != kUTF8) {
        if (!convert(lines, encoding, std::string(kUTF8))) {
            error =
                "the PPD is in the encoding \"" + encoding + "\", from which it cannot be converted to UTF-8";
            return std::nullopt;
        }
        saved += savedLine(std::string(kSavedEncoding), encoding);
    }
    for (std::string& line : lines) {
        const auto found = titleLine(line);
        if (!found) continue;
        const auto paper =
            std::ranges::find(papers, found->choice.substr(kCustomType.size()), &PaperTitle::type);
        if (paper == papers.end() || paper->name.empty()) continue;
        const std::size_t others = line.size() - found->title.size() + 1;
        const std::string title =
            "/" + encoded(paper->name, others < kLongestLine ? kLongestLine - others : 0);
        if (title == found->title) continue;
        line.replace(found->begin, found->end - found->begin, title);
        saved += savedLine(found->key(), found->title);
    }
    if (!lines.empty() && !lines.back().ends_with('\n') && !saved.empty()) lines.back() += '\n';
    return joined(lines) + saved;
}

std::string publishedTitle(std::string_view name) {
    return std::string(platform::prefixOfUTF8(name, kLongestTitle));
}

std::map<std::string, std::string> publishedTitles(ppd_file_t& record) {
    std::map<std::string, std::string> titles;
    ppd_option_t* const option = ppdFindOption(&record, "MediaType");
    for (const ppd_attr_t* saved = ppdFindAttr(&record, kSavedKeyword, nullptr);
         option != nullptr && saved != nullptr; saved = ppdFindNextAttr(&record, kSavedKeyword, nullptr))
        if (const ppd_choice_t* const choice = ppdFindChoice(option, saved->spec))
            titles.emplace(choice->choice, choice->text);
    return titles;
}

} // namespace orvan
