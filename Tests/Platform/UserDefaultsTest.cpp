#include "Platform/UserDefaults.h"

#include "Platform/TextEncoding.h"
#include "Tests/Support/Processes.h"

#include <gtest/gtest.h>

using namespace platform;

TEST(UserDefaults, languagesComeFromTheLocaleSettings) {
    const struct {
        const char* language;
        const char* all;
        const char* messages;
        const char* lang;
        const char* languages;
    } cases[] = {
        {"", "", "", "de_AT.UTF-8", "de-AT de"},
        {"", "", "fr_FR", "de_DE", "fr-FR fr"},
        {"", "es_ES.UTF-8@euro", "fr_FR", "de_DE", "es-ES es"},
        {"nl:de_DE:nl", "es_ES", "", "", "nl de-DE de"},
        {"", "C", "", "de_DE", ""},
        {"", "POSIX", "", "", ""},
        {"", "C.UTF-8", "", "", ""},
        {"", "", "", "", ""},
    };
    const auto languages = [] {
        std::string joined;
        for (const std::string& language : preferredLanguages())
            joined += (joined.empty() ? "" : " ") + language;
        return joined;
    };
    for (const auto& [language, all, messages, lang, expected] : cases)
        EXPECT_EQ(orvan::inChild(
                      {{"LANGUAGE", language}, {"LC_ALL", all}, {"LC_MESSAGES", messages}, {"LANG", lang}},
                      languages),
            expected)
            << language << '|' << all << '|' << messages << '|' << lang;
}

TEST(TextEncoding, decodesOnlyWhatIsValid) {
    using namespace std::string_view_literals;
    const struct {
        std::string_view bytes;
        bool utf8;
        bool ascii;
    } cases[] = {
        {"\0a\0b\x7F"sv, true, true},
        {"Gr\xC3\xB6\xC3\x9F \xF0\x9F\x96\xA8"sv, true, false},
        {"\xC3"sv, false, false},
        {"\xC0\xAF"sv, false, false},         // longer than it has to be
        {"\xED\xA0\x80"sv, false, false},     // a surrogate
        {"\xF4\x90\x80\x80"sv, false, false}, // above U+10FFFF
        {"\xC3\0\xB6"sv, false, false},
    };
    for (const auto& [bytes, utf8, ascii] : cases) {
        EXPECT_EQ(decodeUTF8(bytes), utf8 ? std::optional(std::string(bytes)) : std::nullopt)
            << testing::PrintToString(bytes);
        EXPECT_EQ(decodeASCII(bytes), ascii ? std::optional(std::string(bytes)) : std::nullopt)
            << testing::PrintToString(bytes);
    }
}
