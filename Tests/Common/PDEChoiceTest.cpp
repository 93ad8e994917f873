#include "Common/PPDUtilities.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

namespace orvan {
namespace {

// An option record with its choice records, as libcups lays them out.
struct OptionRecord {
    struct Choice {
        std::string keyword;
        std::string text;
    };

    explicit OptionRecord(const std::vector<Choice>& rows, const std::string& defaultChoice)
        : choices(rows.size()) {
        set(option.keyword, "MediaType");
        set(option.defchoice, defaultChoice);
        option.choices = choices.data();
        option.num_choices = static_cast<int>(rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            set(choices[i].choice, rows[i].keyword);
            set(choices[i].text, rows[i].text);
            choices[i].option = &option;
        }
    }

    template <std::size_t size>
    static void set(char (&field)[size], const std::string& text) {
        ASSERT_LE(text.size(), size);
        std::memset(field, 0, size);
        std::memcpy(field, text.data(), text.size());
    }

    ppd_option_t option{};
    std::vector<ppd_choice_t> choices;
};

const std::string kFullKeyword(41, 'k'); // leaves no room for a terminator

std::string textOf(const std::string* text) {
    return text != nullptr ? *text : "(null)";
}

TEST(PDEChoice, PresentsItsRecordTwice) {
    const std::tuple<OptionRecord::Choice, std::string, std::string> cases[] = {
        {{"Bond", "Briefpapier für Gäste"}, "Briefpapier für Gäste", "Bond"},
        {{"", ""}, "", ""},
        {{"Labels", "\xC4tiketten"}, "(null)", "Labels"},                            // not UTF-8
        {{"Labels", "\xE2\x82"}, "(null)", "Labels"},                                // cut within a character
        {{"Long", std::string(78, 't') + "\xE2\x82"}, std::string(78, 't'), "Long"}, // by libcups
        {{"Long", std::string(79, 't') + "\xC3"}, std::string(79, 't'), "Long"},
        {{"Long", "\xC4" + std::string(79, 't')}, "(null)", "Long"},
        {{"Größe", "Größe"}, "Größe", "(null)"}, // not ASCII
        {{kFullKeyword, std::string(81, 't')}, std::string(81, 't'), kFullKeyword},
    };
    for (const auto& [record, userTitle, ppdTitle] : cases) {
        OptionRecord option({record}, "");
        PDEChoice choice(&option.choices[0]);
        EXPECT_EQ(choice.choice(), &option.choices[0]);
        EXPECT_EQ(textOf(choice.userTitle()), userTitle);
        EXPECT_EQ(textOf(choice.ppdTitle()), ppdTitle);
    }
}

TEST(PDEChoice, KeepsATitleFromItsFirstUse) {
    OptionRecord option({{"CustomType1", "Custom Type 1"}}, "");
    ppd_choice_t& record = option.choices[0];
    PDEChoice before(&record);
    EXPECT_EQ(textOf(before.userTitle()), "Custom Type 1");
    OptionRecord::set(record.text, "Invoices");
    OptionRecord::set(record.choice, "CustomType9");
    EXPECT_EQ(textOf(before.userTitle()), "Custom Type 1");
    EXPECT_EQ(textOf(before.ppdTitle()), "CustomType9") << "it was not asked for before";
    EXPECT_EQ(textOf(PDEChoice::choiceWithChoice(&record)->userTitle()), "Invoices");
}

TEST(PDEChoice, ComparesTheDefaultOverTheWholeField) {
    const std::tuple<std::string, std::string, bool> cases[] = {
        {"Plain", "Plain", true},
        {"Plain", "plain", false},
        {"Plain", "PlainThick", false},
        {kFullKeyword, kFullKeyword, true},
        {kFullKeyword, std::string(40, 'k'), false},
        {kFullKeyword, std::string(40, 'k') + "y", false},
    };
    for (const auto& [keyword, defaultChoice, isDefault] : cases) {
        OptionRecord option({{keyword, ""}}, defaultChoice);
        EXPECT_EQ(PDEChoice(&option.choices[0]).isDefaultChoice(), isDefault)
            << keyword << " of " << defaultChoice;
    }
}

TEST(PPDUtilities, ListsAnOptionsRecordsInOrder) {
    EXPECT_EQ(ArrayFromPPDOption(nullptr), nullptr);
    OptionRecord option({{"B", ""}, {"A", ""}, {"B", ""}}, "");
    const auto list = ArrayFromPPDOption(&option.option);
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->size(), 3U);
    for (std::size_t i = 0; i < list->size(); ++i)
        EXPECT_EQ(list->at(i)->choice(), &option.choices[i]);
    for (const int count : {0, -1}) {
        option.option.num_choices = count;
        const auto none = ArrayFromPPDOption(&option.option);
        ASSERT_NE(none, nullptr);
        EXPECT_TRUE(none->empty());
        EXPECT_FALSE(HasOptionKey(&option.option, "A"));
    }
}

TEST(PPDUtilities, FindsTheFirstChoiceThatMatches) {
    const std::tuple<std::optional<std::string_view>, const char*, std::int64_t> cases[] = {
        {"Plain", "Bond", 1},
        {"plain", "Bond", -1},
        {"", "Bond", -1},
        {"Größe", "Bond", -1},
        {"Dup", "Bond", 2},
        {std::nullopt, "Bond", 4},
        {std::nullopt, "Dup", 2}, // the first of two defaults
        {std::nullopt, "Gone", -1},
    };
    for (const auto& [keyword, defaultChoice, index] : cases) {
        SCOPED_TRACE(testing::Message() << keyword.value_or("(none)") << ", default " << defaultChoice);
        // The first keyword is not ASCII, so it has no text to be found by.
        OptionRecord option(
            {{"Größe", ""}, {"Plain", ""}, {"Dup", "1"}, {"Dup", "2"}, {"Bond", ""}}, defaultChoice);
        const auto list = ArrayFromPPDOption(&option.option);
        EXPECT_EQ(FindIndexForChoice(keyword, *list), index);
        const auto entry = FindChoiceForString(keyword, *list);
        EXPECT_EQ(entry, index < 0 ? nullptr : list->at(static_cast<std::size_t>(index)));
    }
    EXPECT_EQ(FindIndexForChoice("Plain", {}), -1);
    EXPECT_EQ(FindChoiceForString(std::nullopt, {}), nullptr);
}

TEST(PPDUtilities, LooksUpKeywordsAndTitlesByTheirBytes) {
    OptionRecord option({{"Plain", ""}, {"Größe", ""}, {kFullKeyword, ""}}, "");
    for (const std::string& present : {std::string("Plain"), std::string("Größe"), kFullKeyword})
        EXPECT_TRUE(HasOptionKey(&option.option, present)) << present;
    for (const char* absent : {"plain", "Plai", "Plain ", ""})
        EXPECT_FALSE(HasOptionKey(&option.option, absent)) << absent;
    EXPECT_FALSE(HasOptionKey(nullptr, "Plain"));

    OptionRecord::set(option.option.text, "Papiertyp für Gäste");
    EXPECT_EQ(CreateOptionTitle(option.option), "Papiertyp für Gäste");
    OptionRecord::set(option.option.text, "Papiertyp f\xFCr");
    EXPECT_EQ(CreateOptionTitle(option.option), std::nullopt);
}

} // namespace
} // namespace orvan
