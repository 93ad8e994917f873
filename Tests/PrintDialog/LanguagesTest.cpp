// One language at a time: the driver's titles, the panel's texts and the host's.
#include "Formats/PropertyList.h"
#include "Formats/Unicode.h"
#include "Platform/Bundle.h"
#include "Platform/Input.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/InstalledFiles.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/Processes.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvan {
namespace {

const std::vector<std::string> kLanguages{"de", "en", "es", "fr", "it", "ja", "nl"};

std::unique_ptr<DialogPPD> open(const std::filesystem::path& file) {
    platform::Failure error;
    auto ppd = DialogPPD::open(file, error);
    EXPECT_NE(ppd, nullptr) << error.value_or("");
    return ppd;
}

// "%1" and so on, in order.
std::string placesIn(const std::string& text) {
    std::set<char> places;
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
        if (text[i] == '%' && text[i + 1] >= '1' && text[i + 1] <= '9') places.insert(text[i + 1]);
    return {places.begin(), places.end()};
}

std::map<std::string, std::string> textsIn(const std::filesystem::path& folder, const std::string& language) {
    platform::Failure error;
    const auto file = folder / "Contents/Resources" / (language + ".lproj") / "Localizable.strings";
    const auto bytes = platform::readFile(file.string(), error);
    const auto table = platform::PropertyList::read(bytes.value_or(""), error);
    std::map<std::string, std::string> texts;
    EXPECT_TRUE(table && table->asDictionary()) << file << ": " << error.value_or("");
    if (table && table->asDictionary())
        for (const auto& [key, text] : *table->asDictionary())
            texts[key] = text.asString() != nullptr ? *text.asString() : "";
    return texts;
}

TEST(Languages, haveEveryTextAndNoOther) {
    for (const auto& folder : {paperOptionsBundleFolder(), privateFolder() / "PrintDialog.resources"}) {
        EXPECT_EQ(platform::Bundle::open(folder)->languages(), kLanguages) << folder;
        const auto english = textsIn(folder, "en");
        for (const std::string& language : kLanguages) {
            const auto texts = textsIn(folder, language);
            EXPECT_EQ(texts.size(), english.size()) << folder << language;
            for (const auto& [key, text] : texts) {
                EXPECT_TRUE(english.contains(key)) << language << ": " << key;
                EXPECT_FALSE(text.empty()) << language << ": " << key;
                EXPECT_EQ(placesIn(text), placesIn(key)) << language << ": " << key;
            }
        }
    }
}

// Every option and choice of the driver has its line in every language; a title that is cut would be no
// UTF-8.
TEST(Languages, haveEveryTitleOfTheDriver) {
    const auto ppd = open(ORVAN_DRIVER_PPD);
    ASSERT_NE(ppd, nullptr);
    platform::Failure error;
    const std::string text = platform::readFile(ORVAN_DRIVER_PPD, error).value_or("");
    constexpr std::size_t kLongest = 79; // bytes of a title that libcups reads
    const auto expectTitle = [&](const std::string& line) {
        const std::size_t begin = text.find("\n" + line + "/") + line.size() + 2;
        ASSERT_NE(text.find("\n" + line + "/"), std::string::npos) << line;
        const std::string title = text.substr(begin, text.find(": \"\"\n", begin) - begin);
        EXPECT_EQ(platform::findInvalidUTF8(title), std::string::npos) << line;
        EXPECT_TRUE(!title.empty() && title.size() <= kLongest) << line << ": " << title;
    };
    for (const std::string& language : kLanguages) {
        if (language == "en") continue;
        const std::string prefix = "*" + language + ".";
        for (ppd_option_t* option = ppdFirstOption(ppd->record()); option != nullptr;
             option = ppdNextOption(ppd->record())) {
            expectTitle(prefix + "Translation " + option->keyword);
            for (int i = 0; i < option->num_choices; ++i)
                expectTitle(prefix + option->keyword + " " + option->choices[i].choice);
        }
    }
}

struct Spoken {
    const char* language; // the variable LANGUAGE
    const char* all;      // LC_ALL
    const char* answer;   // language, title of an option and of a choice, a text of the host's
};

std::string answerIn(const Spoken& c, const std::filesystem::path& file) {
    return inChild({{"LANGUAGE", c.language}, {"LC_ALL", c.all}}, [&file] {
        platform::Failure error;
        const auto ppd = DialogPPD::open(file, error);
        if (ppd == nullptr) return *error;
        return ppd->language() + "|" + ppd->optionTitle("Duplex") + "|" +
               ppd->choiceTitle("MediaType", "Plain") + "|" + hostText(ppd->language(), "Undo");
    });
}

TEST(Languages, areTheFirstThatDriverAndTextsHave) {
    const DerivedPPD driver;
    for (const Spoken& c : {
             Spoken{"", "C", "en|2-Sided Printing|Plain|Undo"},
             Spoken{"", "de_AT.UTF-8", "de|Beidseitiger Druck|Normalpapier|Rückgängig"},
             Spoken{"fr", "de_DE.UTF-8", "fr|Impression recto verso|Ordinaire|Annuler la modification"},
             Spoken{"sv:es:de", "de_DE.UTF-8", "es|Impresión a doble cara|Normal|Deshacer"},
             Spoken{"", "it_CH.UTF-8", "it|Stampa fronte-retro|Comune|Annulla modifica"},
             Spoken{"", "nl_BE.UTF-8", "nl|Dubbelzijdig afdrukken|Normaal|Ongedaan maken"},
             Spoken{"", "ja_JP.UTF-8", "ja|両面印刷|普通紙|元に戻す"},
             Spoken{"", "sv_SE.UTF-8", "en|2-Sided Printing|Plain|Undo"},
             Spoken{"en:de", "de_DE.UTF-8", "en|2-Sided Printing|Plain|Undo"},
         })
        EXPECT_EQ(answerIn(c, driver.file()), c.answer) << c.language << " " << c.all;

    // The driver of an older package, and one of a maker that writes in French.
    DerivedPPD older;
    older.replace("en de fr es it nl ja", "en fr");
    EXPECT_EQ(answerIn({"es:fr", "de_DE.UTF-8", ""}, older.file()),
        "fr|Impression recto verso|Ordinaire|Annuler la modification");
    EXPECT_EQ(answerIn({"", "de_DE.UTF-8", ""}, older.file()), "en|2-Sided Printing|Plain|Undo");
    DerivedPPD french;
    french.replace("LanguageVersion: English", "LanguageVersion: French")
        .replace("en de fr es it nl ja", "fr de");
    EXPECT_EQ(answerIn({"", "en_US.UTF-8", ""}, french.file()),
        "fr|2-Sided Printing|Plain|Annuler la modification");

    // Lines that are odd: hexadecimal numbers, no title, an unknown option, no end; nothing else is lost.
    DerivedPPD odd;
    odd.replace("*de.Translation Duplex/Beidseitiger Druck: \"\"",
           "*de.Translation Duplex/Zwei<C3><BC 6a>x: \"\"\n*de.Unknown A/B: \"\"")
        .replace("*de.MediaType Plain/Normalpapier: \"\"",
            "*de.MediaType Plain/: \"\"\n*de.MediaType Bond/Normal");
    EXPECT_EQ(answerIn({"", "de_DE.UTF-8", ""}, odd.file()), "de|Zweiüjx|Plain|Rückgängig");
}

TEST(Languages, areReadFromAPipeAsWell) {
    const DerivedPPD driver;
    const std::string title = inChild({{"LANGUAGE", "ja"}, {"LC_ALL", "de_DE.UTF-8"}}, [&driver] {
        std::FILE* const pipe = ::popen(("cat " + driver.file().string()).c_str(), "r");
        platform::Failure error;
        const auto ppd = DialogPPD::read(::fileno(pipe), "the PPD on standard input", error);
        ::pclose(pipe);
        return ppd != nullptr ? ppd->optionTitle("Duplex") : error.value_or("");
    });
    EXPECT_EQ(title, "両面印刷");
}

} // namespace
} // namespace orvan
