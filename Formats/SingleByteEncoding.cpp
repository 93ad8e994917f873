#include "Formats/SingleByteEncoding.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace platform {
namespace {

// The beginnings of their names, in lower case.
constexpr std::array<std::string_view, 8> kFamilies{
    "iso-8859-", "iso_8859-", "iso8859-", "windows-125", "windows-874", "cp125", "cp874", "koi8-"};

struct FreeText {
    void operator()(gchar* text) const { g_free(text); }
};
using Text = std::unique_ptr<gchar, FreeText>;

int characterOf(char byte, const char* name) {
    const Text text(g_convert(&byte, 1, "UTF-8", name, nullptr, nullptr, nullptr));
    return text != nullptr ? static_cast<int>(g_utf8_get_char(text.get())) : -1;
}

} // namespace

bool fillSingleByteEncoding(const std::string& name, std::span<int, 256> characters) {
    const Text lower(g_ascii_strdown(name.c_str(), -1));
    const auto isIts = [&](std::string_view family) {
        return std::string_view(lower.get()).starts_with(family);
    };
    // Each of them has the letters of ASCII, so what has none is not known.
    if (std::ranges::none_of(kFamilies, isIts) || characterOf('A', name.c_str()) != 'A') return false;
    for (std::size_t byte = 0; byte < characters.size(); ++byte)
        characters[byte] = characterOf(static_cast<char>(byte), name.c_str());
    return true;
}

} // namespace platform
