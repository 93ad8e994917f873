// `orvan` as its users meet it: what it answers, and what it says when it cannot.
#include "Tests/Orvan/Program.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

namespace orvan {
namespace {

using Json = nlohmann::json;

constexpr const char* kDriver = ORVAN_DRIVER_PPD;

// On a release on which the PPD's choices are shown as they are.
const Environment kTenTen{{"ORVAN_SYSTEM_RELEASE", "10.10.0"}};

// The JSON that the program answers with, and nothing else.
Json answer(const Words& arguments, int exitCode = 0) {
    const ProgramEnd end = orvan(arguments, kTenTen);
    EXPECT_EQ(end.exitCode, exitCode) << end.errors;
    EXPECT_EQ(std::count(end.output.begin(), end.output.end(), '\n'), 1) << end.output;
    EXPECT_EQ(end.errors.empty(), exitCode == 0) << end.errors;
    return Json::parse(end.output, nullptr, false);
}

TEST(OrvanCommand, AnswersForThePanelInJson) {
    DerivedPPD ppd;
    ppd.removeOptions({"OVNLastPageSource", "OVNPrintingOptimization"});
    Json panel = answer({"panel", "--ppd", ppd.file(), "--json", "--set", "OVNEdgeToEdge=On"});
    const Json rows = panel["rows"];
    panel.erase("rows");
    const Json tab = panel["tab"];
    panel.erase("tab");
    EXPECT_EQ(panel, Json::parse(R"({"schemaVersion": 1, "kind": "com.orvan.qbv.print.pde.cocoa.paperfeed",
        "name": "Paper Options", "height": 190,
        "supportedPPDOptionKeys": ["MediaType", "Slipsheet", "OVNSlipSheetSource", "OVNMismatch", "OVNEdgeToEdge"],
        "summary": {"Paper Type": "Plain", "Separator Page": "None", "Separator Page Source": "Automatic",
            "Media Mismatch": "Use Printer Setting", "Edge to Edge": "On"}})"));
    EXPECT_EQ(panel["height"].dump(), "190");
    ASSERT_EQ(rows.size(), 7U);
    EXPECT_EQ(rows[6],
        Json::parse(R"({"row": 7, "keyword": "OVNEdgeToEdge", "label": "Edge to Edge:", "enabled": true,
                        "hidden": false, "labelOrigin": [10, 41], "popUpOrigin": [190, 37], "selected": 1,
                        "items": [{"title": "Off", "keyword": "Off"}, {"title": "On", "keyword": "On"}]})"));
    EXPECT_EQ(rows[3], Json::parse(R"({"row": 4, "keyword": "OVNLastPageSource", "label": "Last Page Source:",
                        "enabled": false, "hidden": false, "labelOrigin": [10, 101], "popUpOrigin": [190, 97],
                        "selected": null, "items": []})"));
    EXPECT_EQ(rows[5]["hidden"], true);
    EXPECT_EQ(rows[5]["selected"], nullptr);
    EXPECT_EQ(rows[0]["items"].size(), 20U);
    EXPECT_EQ(
        rows[0]["items"][10], Json::parse(R"({"title": "Hole Punched", "keyword": "PrepunchedPlain"})"));
    const Json& form = tab["views"][0]["views"][0];
    EXPECT_EQ(form["views"].size(), 6U) << "of the rows that can be seen";
    EXPECT_EQ(form["views"][5],
        Json::parse(
            R"({"kind": "menu", "title": "Edge to Edge:", "letter": "t", "enabled": true, "selected": 1,
            "entries": [{"title": "Off", "keyword": "Off"}, {"title": "On", "keyword": "On"}]})"));
    EXPECT_EQ(tab["views"][0]["views"][1]["views"][4],
        Json::parse(R"({"kind": "text", "text": "Edge to Edge: On"})"));
}

TEST(OrvanCommand, AnswersForTitlesThatAreNotUTF8) {
    DerivedPPD ppd;
    ppd.replace("*LanguageEncoding: ISOLatin1", "*LanguageEncoding: UTF-8")
        .replace("MediaType Bond/Bond", "MediaType Bond/B\xF6nd")
        .replace("Paper Type: PickOne", "P\xE4per Type: PickOne");
    const Json panel = answer({"panel", "--ppd", ppd.file(), "--json", "--set", "MediaType=Bond"});
    EXPECT_EQ(panel["rows"][0]["label"], "MediaType:");
    EXPECT_EQ(panel["rows"][0]["items"][2], Json::parse(R"({"title": "Bond", "keyword": "Bond"})"));
    EXPECT_EQ(panel["summary"]["MediaType"], "");
}

TEST(OrvanCommand, HasNoPanelForOtherPrinters) {
    DerivedPPD ppd;
    ppd.keepOptions({});
    EXPECT_EQ(answer({"panel", "--ppd", ppd.file(), "--json"}, 1),
        Json::parse(R"({"schemaVersion": 1, "panel": null})"));
    expectRefusal(orvan({"panel", "--ppd", ppd.file()}),
        "the PPD has none of the panel's options, so there is no panel for it");
}

TEST(OrvanCommand, ShowsThePanelToPeople) {
    DerivedPPD ppd;
    ppd.removeOptions({"Slipsheet", "OVNSlipSheetSource", "OVNPrintingOptimization"});
    expectEnd(orvan({"panel", "--ppd", ppd.file(), "--set", "MediaType=CustomType2"}, kTenTen), 0,
        "Paper Options\n\n"
        "  Paper Type: [Custom Type 2]  of 20\n"
        "  Separator Page: (not available)\n"
        "  Separator Page Source: (not available)\n"
        "  Last Page Source: [Same as Document]  of 6\n"
        "  Media Mismatch: [Use Printer Setting]  of 5\n"
        "  Edge to Edge: [Off]  of 2\n"
        "  Details\n"
        "    Paper Type: Custom Type 2\n"
        "    Last Page Source: Same as Document\n"
        "    Media Mismatch: Use Printer Setting\n"
        "    Edge to Edge: Off\n");
    const ProgramEnd german =
        orvan({"panel", "--ppd", kDriver}, {{"LC_ALL", "de_DE.UTF-8"}, {"ORVAN_SYSTEM_RELEASE", "10.10.0"}});
    EXPECT_TRUE(german.output.starts_with("Papieroptionen\n\n  Papiertyp: [Normalpapier]  of 20\n"))
        << german.output;
}

TEST(OrvanCommand, ChecksTheFamily) {
    const struct {
        const char* from;
        const char* to;
        const char* json;
        const char* text;
    } cases[] = {
        {"", "", R"({"schemaVersion": 1, "family": 0, "modelNumber": "4500"})",
            "Orvan printer, model 4500: the paper options serve it (status 0).\n"},
        {"*Manufacturer: \"Orvan\"", "*Manufacturer: \"Other\"",
            R"({"schemaVersion": 1, "family": -9530, "modelNumber": "4500"})",
            "Not an Orvan printer: the paper options do not serve it (status -9530). Model number 4500.\n"},
    };
    for (const auto& [from, to, json, text] : cases) {
        DerivedPPD ppd;
        ppd.replace(from, to);
        EXPECT_EQ(answer({"check", "--json", ppd.file()}), Json::parse(json));
        expectEnd(orvan({"check", ppd.file()}), 0, text);
    }
}

TEST(OrvanCommand, SaysInOneLineWhatIsWrong) {
    const TempFolder folder;
    const std::string text = folder.write("text.txt", "Dear Sir or Madam\n");
    const std::string none = folder.path() / "none.ppd";
    const Refusal cases[] = {
        {{"panel", "--ppd", none}, 1, none + ": there is no such file"},
        {{"panel", "--ppd", text}, 1, text + ": "},
        {{"check", folder.path()}, 1, "it is a folder"},
        {{"panel", "-q", "Office"}, 1, (folder.path() / "socket").string()},
        {{"panel", "--ppd", kDriver, "--set", "Unknown=x"}, 1, "no option Unknown; it has MediaType, "},
        {{"panel", "--ppd", kDriver, "--set", "OVNEdgeToEdge=Sideways"}, 1,
            "no choice Sideways; it has Off, On"},
    };
    for (const auto& [arguments, exitCode, words] : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        expectRefusal(
            orvan(arguments, {{"CUPS_SERVER", (folder.path() / "socket").string()}}), words, exitCode);
    }
}

TEST(OrvanCommand, HelpsAndNamesItself) {
    EXPECT_EQ(orvan({"panel", "--help"}).exitCode, 0);
    EXPECT_TRUE(orvan({"--version"}).output.starts_with("orvan 1."));
}

} // namespace
} // namespace orvan
