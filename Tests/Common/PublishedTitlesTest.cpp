#include "Common/PublishedTitles.h"

#include "Common/PPDUtilities.h"
#include "Formats/TextEncoding.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace orvan {
namespace {

PPDRecord recordOf(const std::string& text) {
    const TempFolder folder;
    return PPDRecord(ppdOpenFile(folder.write("published.ppd", text).c_str()));
}

std::string paperTitle(const std::string& text, const std::string& choice) {
    const PPDRecord record = recordOf(text);
    if (record == nullptr) return "(no PPD)";
    const ppd_choice_t* const found = ppdFindChoice(ppdFindOption(record.get(), "MediaType"), choice.c_str());
    return found != nullptr ? orvan::titleIn(found->text).value_or("(no UTF-8)") : "(no choice)";
}

std::string published(const std::string& text, const std::vector<PaperTitle>& papers) {
    platform::Failure error;
    const auto changed = withPublishedTitles(text, papers, error);
    EXPECT_TRUE(changed.has_value()) << error.value_or("");
    return changed.value_or("");
}

TEST(PublishedTitles, AreThereAndBack) {
    const std::string text = DerivedPPD().replace("/Plain: ", "/Pl\xE4in: ").text(); // ISO 8859-1
    const std::string tooLong(100, 'x');
    const std::string manyBytes = "和紙和紙和紙和紙和紙和紙和紙和紙和紙和紙和紙和紙和紙和紙和紙";
    for (const std::string name :
        {"Certificates", "Größe: \"A4\" / <innen> \\ *", "a:b/c", ":", "\"\"\"", "<41>", "'(x)'", "%% 100 %",
            "tab\there", "line\nfeed", "\x7F", " space ", "和紙 (生成り)", "🗎🗎🗎", "é",
            "*de.MediaType", "MediaType CustomType1/x:", "100% <", tooLong.c_str(), manyBytes.c_str()}) {
        SCOPED_TRACE(name);
        const std::string changed = published(text, {{"3", name}, {"99", "nobody's"}, {"5", ""}});
        EXPECT_EQ(paperTitle(changed, "CustomType3"), platform::prefixOfUTF8(name, 79));
        EXPECT_EQ(paperTitle(changed, "CustomType5"), "Custom Type 5");
        EXPECT_EQ(paperTitle(changed, "Plain"), "Pläin");
        EXPECT_EQ(withoutPublishedTitles(changed), text);
        EXPECT_EQ(published(changed, {{"3", name}}), changed) << "again";
        const PPDRecord record = recordOf(changed);
        EXPECT_EQ(publishedTitles(*record), (std::map<std::string, std::string>{{"CustomType3",
                                                std::string(platform::prefixOfUTF8(name, 79))}}));
        // The code and all other lines are as they were.
        EXPECT_STREQ(ppdFindChoice(ppdFindOption(record.get(), "MediaType"), "CustomType3")->code,
            ppdFindChoice(ppdFindOption(recordOf(text).get(), "MediaType"), "CustomType3")->code);
    }
    // Another name later; each language has it.
    const std::string changed =
        published(published(text, {{"3", "Old"}, {"4", "Gone"}}), {{"3", "Neu"}, {"2", "和紙"}});
    EXPECT_EQ(paperTitle(changed, "CustomType3"), "Neu");
    EXPECT_EQ(paperTitle(changed, "CustomType4"), "Custom Type 4");
    EXPECT_NE(changed.find("*de.MediaType CustomType3/Neu: \"\"\n"), std::string::npos);
    EXPECT_NE(changed.find("*ja.MediaType CustomType2/和紙: \"\"\n"), std::string::npos);
    EXPECT_EQ(withoutPublishedTitles(changed), text);
    EXPECT_EQ(published(text, {}), text);
    EXPECT_EQ(withoutPublishedTitles(text), text);
}

TEST(PublishedTitles, NeedAnEncodingThatIsKnown) {
    const std::string text = DerivedPPD().replace("ISOLatin1", "MacStandard").text();
    platform::Failure error;
    EXPECT_TRUE(withPublishedTitles(text, {{"3", "ASCII"}}, error));
    EXPECT_FALSE(withPublishedTitles(text, {{"3", "Größe"}}, error));
    EXPECT_NE(error.value_or("").find("\"MacStandard\""), std::string::npos);
    for (const std::string odd :
        {"", "\n", "*OVNTitle", "*OVNTitle x: \"", "*MediaType CustomType", "*LanguageEncoding:"})
        EXPECT_TRUE(withPublishedTitles(odd, {{"", "x"}}, error)) << odd;
}

} // namespace
} // namespace orvan
