#include "Platform/UserDefaults.h"

#include "Tests/Support/Processes.h"

#include <gtest/gtest.h>

using namespace platform;

TEST(PreferredLanguages, languagesComeFromTheLocaleSettings) {
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
