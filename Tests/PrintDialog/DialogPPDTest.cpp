#include "PrintDialog/Host/DialogPPD.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace orvan {

static void PrintTo(const ChoiceChange& change, std::ostream* out) {
    *out << change.option << ": " << change.from << " -> " << change.to;
}

namespace {

using Choices = std::map<std::string, std::string>;

std::unique_ptr<DialogPPD> openDerived(const DerivedPPD& ppd) {
    platform::Failure error;
    auto opened = DialogPPD::open(ppd.file(), error);
    EXPECT_NE(opened, nullptr) << error.value_or("");
    return opened;
}

// A panel has given the record another keyword. What was marked before it is over, with its contradictions.
TEST(DialogPPD, KeepsAChoiceThatNoRecordHasAnyMore) {
    const auto ppd = openDerived(DerivedPPD());
    ASSERT_NE(ppd, nullptr);
    ppd->mark("MediaType", "Labels");
    ppd_option_t* const papers = ppdFindOption(ppd->record(), "MediaType");
    std::strcpy(ppdFindChoice(papers, "CustomType5")->choice, "CustomType17");
    EXPECT_TRUE(ppd->isInFile("MediaType", "CustomType5"));
    EXPECT_FALSE(ppd->isInFile("MediaType", "CustomType17"));
    EXPECT_EQ(ppd->mark("MediaType", "CustomType5").changes,
        (std::vector<ChoiceChange>{{"MediaType", "Labels", "CustomType5"}}));
    EXPECT_EQ(ppd->choiceTitle("MediaType", "CustomType5"), "Custom Type 5");
    EXPECT_EQ(ppd->mark("OVNEdgeToEdge", "On").changes,
        (std::vector<ChoiceChange>{{"OVNEdgeToEdge", "Off", "On"}}));
    EXPECT_EQ(ppd->choiceOf("MediaType"), "CustomType5");
    ppd->setMarks({{"MediaType", "CustomType17"}});
    EXPECT_EQ(ppd->choiceOf("MediaType"), "CustomType17");
}

TEST(DialogPPD, MakesWayForTheNewestChoice) {
    using Changes = std::vector<ChoiceChange>;
    const struct {
        Choices before;
        const char* option;
        const char* choice;
        Changes changes;
    } cases[] = {
        {{}, "MediaType", "Bond", {{"MediaType", "Plain", "Bond"}}},
        {{}, "MediaType", "Plain", {}},
        {{}, "MediaType", "Unknown", {}},
        {{}, "Unknown", "Plain", {}},
        {{}, "", "", {}},
        {{{"OVNEdgeToEdge", "On"}}, "MediaType", "Labels",
            {{"MediaType", "Plain", "Labels"}, {"OVNEdgeToEdge", "On", "Off"}}},
        {{{"MediaType", "Labels"}}, "OVNEdgeToEdge", "On",
            {{"OVNEdgeToEdge", "Off", "On"}, {"MediaType", "Labels", "Plain"}}},
        {{{"Duplex", "DuplexTumble"}, {"OVNEdgeToEdge", "On"}}, "MediaType", "Transparency",
            {{"MediaType", "Plain", "Transparency"}, {"Duplex", "DuplexTumble", "None"},
                {"OVNEdgeToEdge", "On", "Off"}}},
        {{{"Slipsheet", "BannerBoth"}, {"OVNSlipSheetSource", "Tray2"}}, "Slipsheet", "None",
            {{"Slipsheet", "BannerBoth", "None"}, {"OVNSlipSheetSource", "Tray2", "Automatic"}}},
    };
    for (const auto& [before, option, choice, changes] : cases) {
        SCOPED_TRACE(
            testing::Message() << option << "=" << choice << " on " << testing::PrintToString(before));
        const auto ppd = openDerived(DerivedPPD());
        ppd->markAll(before);
        for (const auto& [keyword, value] : before)
            EXPECT_EQ(ppd->choiceOf(keyword), value);
        const MarkResult result = ppd->mark(option, choice);
        EXPECT_EQ(result.changes, changes);
        EXPECT_EQ(result.conflicts, Choices{});
        EXPECT_EQ(ppdConflicts(ppd->record()), 0);
    }
}

TEST(DialogPPD, SettlesSeveralChoicesAmongThemselves) {
    const auto ppd = openDerived(DerivedPPD());
    const MarkResult result = ppd->markAll({{"MediaType", "Transparency"}, {"OVNEdgeToEdge", "On"},
        {"Duplex", "DuplexTumble"}, {"Slipsheet", "Unknown"}, {"Unknown", "x"}, {"ColorModel", "Gray"}});
    EXPECT_EQ(ppdConflicts(ppd->record()), 0);
    EXPECT_EQ(result.conflicts, Choices{});
    EXPECT_EQ(ppd->choiceOf("ColorModel"), "Gray");
    EXPECT_EQ(ppd->choiceOf("Slipsheet"), "None");
    for (const ChoiceChange& change : result.changes)
        EXPECT_EQ(ppd->choiceOf(change.option), change.to);
    EXPECT_TRUE(ppd->markAll({}).changes.empty());
}

TEST(DialogPPD, SaysWhatCannotGiveWay) {
    using Changes = std::vector<ChoiceChange>;
    DerivedPPD derived;
    derived.append("*UIConstraints: *PageSize A3 *MediaType Envelope\n"
                   "*UIConstraints: *MediaType Envelope *PageSize A3\n"
                   "*UIConstraints: *OVNMismatch Hold *OVNHasOVRaster True\n"
                   "*UIConstraints: *ColorModel Gray *OVNHasOVRaster False\n"
                   "*UIConstraints: *ColorModel CMYK *OVNHasOVRaster False\n");
    // The size of the paper is the document's, and yet another pick gives way as it always does.
    auto ppd = openDerived(derived);
    ppd->markAll({{"PageSize", "A3"}, {"OVNEdgeToEdge", "On"}});
    EXPECT_EQ(ppd->choiceOf("PageSize"), "A3");
    MarkResult result = ppd->mark("MediaType", "Envelope");
    EXPECT_EQ(result.conflicts, (Choices{{"PageSize", "A3"}}));
    EXPECT_EQ(result.changes, (Changes{{"MediaType", "Plain", "Envelope"}}));
    EXPECT_EQ(ppd->choiceOf("PageSize"), "A3");

    for (const bool together : {false, true}) {
        ppd = openDerived(derived);
        ppd->mark("MediaType", "Envelope");
        result = together ? ppd->markAll({{"PageSize", "A3"}}) : ppd->mark("PageSize", "A3");
        EXPECT_EQ(result.conflicts, Choices{}) << together;
        EXPECT_EQ(ppd->choiceOf("PageSize"), "A3") << together;
        EXPECT_EQ(ppd->choiceOf("MediaType"), "Plain") << together;
    }

    // Nor does what is installed in the printer.
    ppd = openDerived(derived);
    EXPECT_EQ(ppd->mark("OVNMismatch", "Hold").conflicts, (Choices{{"OVNHasOVRaster", "True"}}));
    EXPECT_EQ(ppd->choiceOf("OVNMismatch"), "Hold");
    ppd = openDerived(derived);
    EXPECT_EQ(ppd->markAll({{"OVNHasOVRaster", "False"}}).conflicts,
        (Choices{{"OVNHasOVRaster", "False"}, {"ColorModel", "CMYK"}}));
}

TEST(DialogPPD, RefusesWhatIsNoPPD) {
    const TempFolder folder;
    const struct {
        const char* name;
        std::string bytes;
        const char* why;
    } cases[] = {
        {"empty", "", "PPD-Adobe"},
        {"text", "Dear Sir or Madam\n", "line 1"},
        {"zeros", std::string(100'000, '\0'), "line"},
        {"header-only", "*PPD-Adobe: \"4.3\"\n", ""},
        {"long-line", DerivedPPD().text() + "*% " + std::string(256, 'x') + "\n", "255 characters"},
        {"half-a-constraint", DerivedPPD().append("*UIConstraints: *MediaType\n").text(), "UIConstraints"},
        {"unclosed", DerivedPPD().text() + "*OVNOpen: \"never ends\n" + std::string(3, '\n'), ""},
    };
    for (const auto& [name, bytes, why] : cases) {
        SCOPED_TRACE(name);
        const auto file = folder.write(name, bytes);
        platform::Failure error;
        const auto ppd = DialogPPD::open(file, error);
        if (*why == '\0') {
            EXPECT_EQ(ppd != nullptr, !error);
            continue;
        }
        EXPECT_EQ(ppd, nullptr);
        EXPECT_TRUE(error.value_or("").starts_with("cannot read the PPD file " + file.string() + ": "))
            << error.value_or("");
        EXPECT_NE(error.value_or("").find(why), std::string::npos) << error.value_or("");
        EXPECT_EQ(DialogPPD::open(file, platform::ignoredFailure()), nullptr);
    }

    ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    const struct {
        std::filesystem::path file;
        const char* why;
    } notFiles[] = {{folder.path(), "it is a folder"}, {folder.path() / "none", "there is no such file"},
        {folder.path() / "pipe", "it is no regular file"}, {"/dev/zero", "it is no regular file"},
        {folder.path() / "empty" / "below", "there is no such file"}};
    for (const auto& [file, why] : notFiles) {
        platform::Failure error;
        EXPECT_EQ(DialogPPD::open(file, error), nullptr);
        EXPECT_EQ(error, "cannot read the PPD file " + file.string() + ": " + why);
    }
}

TEST(DialogPPD, WorksWithWhatItCanRead) {
#ifdef __SANITIZE_ADDRESS__
    constexpr int kMany = 2'000; // libcups grows its arrays one by one, which a checked allocator makes slow
#else
    constexpr int kMany = 20'000;
#endif
    std::string many;
    for (int i = 0; i < kMany; ++i) {
        const std::string number = std::to_string(i);
        many.append("*OpenUI *Many")
            .append(number)
            .append(": PickOne\n*DefaultMany")
            .append(number)
            .append(": A\n");
        many.append("*Many").append(number).append(" A/A: \"\"\n*CloseUI: *Many").append(number).append("\n");
    }
    const auto with = [](const std::string& line) { return DerivedPPD().append(line + "\n").text(); };
    const struct {
        const char* about;
        std::string text;
        const char* paperTitle;
    } cases[] = {
        {"very many options", with(many), "Paper Type"},
        {"2000 more paper types", DerivedPPD().addPaperTypes(2000).text(), "Paper Type"},
        {"255 characters in a line", with("*% " + std::string(252, 'x')), "Paper Type"},
        {"a constraint on what is not there", with("*UIConstraints: *Gone *MediaType Bond"), "Paper Type"},
        {"a constraint on itself", with("*UIConstraints: *MediaType Bond *MediaType Bond"), "Paper Type"},
        {"titles that are not UTF-8",
            DerivedPPD()
                .replace("*LanguageEncoding: ISOLatin1", "*LanguageEncoding: UTF-8")
                .replace("MediaType Bond/Bond", "MediaType Bond/B\xF6nd")
                .replace("Paper Type: PickOne", "P\xE4per Type: PickOne")
                .text(),
            "MediaType"},
    };
    for (const auto& [about, text, paperTitle] : cases) {
        SCOPED_TRACE(about);
        const TempFolder folder;
        platform::Failure error;
        const auto ppd = DialogPPD::open(folder.write("hostile.ppd", text), error);
        ASSERT_NE(ppd, nullptr) << error.value_or("");
        ppd->mark("MediaType", "Bond");
        EXPECT_EQ(ppd->choiceOf("MediaType"), "Bond");
        EXPECT_EQ(ppd->optionTitle("MediaType"), paperTitle);
        EXPECT_EQ(ppd->choiceTitle("MediaType", "Bond"), "Bond");
    }
}

} // namespace
} // namespace orvan
