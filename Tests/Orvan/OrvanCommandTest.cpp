// `orvan` as its users meet it: what it answers, and what it says when it cannot.
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/Processes.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace orvan {
namespace {

using Json = nlohmann::json;
using Words = std::vector<std::string>;

constexpr const char* kDriver = ORVAN_DRIVER_PPD;

// Runs `orvan` in English, on a release on which the PPD's choices are shown as they are.
ProgramEnd orvan(const Words& arguments, Environment environment = {}) {
    Words command{ORVAN_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    environment.insert({{"LC_ALL", "C.UTF-8"}, {"LANGUAGE", ""}, {"ORVAN_SYSTEM_RELEASE", "10.10.0"}});
    return runProgram(command, environment);
}

// The JSON that the program answers with, and nothing else.
Json answer(const Words& arguments, int exitCode = 0) {
    const ProgramEnd end = orvan(arguments);
    EXPECT_EQ(end.exitCode, exitCode) << end.errors;
    EXPECT_EQ(std::count(end.output.begin(), end.output.end(), '\n'), 1) << end.output;
    EXPECT_EQ(end.errors.empty(), exitCode == 0) << end.errors;
    return Json::parse(end.output, nullptr, false);
}

std::vector<std::string> keysOf(const Json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    return keys; // in alphabetical order
}

TEST(OrvanCommand, AnswersForThePanelInJson) {
    DerivedPPD ppd;
    ppd.removeOptions({"OVNLastPageSource", "OVNPrintingOptimization"});
    const Json panel = answer({"panel", "--ppd", ppd.file(), "--json", "--set", "OVNEdgeToEdge=On"});
    EXPECT_EQ(keysOf(panel),
        (Words{"height", "kind", "name", "rows", "schemaVersion", "summary", "supportedPPDOptionKeys"}));
    EXPECT_EQ(panel["schemaVersion"], 1);
    EXPECT_EQ(panel["kind"], "com.orvan.qbv.print.pde.cocoa.paperfeed");
    EXPECT_EQ(panel["name"], "Paper Options");
    EXPECT_EQ(panel["height"].dump(), "190");
    EXPECT_EQ(panel["supportedPPDOptionKeys"],
        Json::parse(R"(["MediaType", "Slipsheet", "OVNSlipSheetSource", "OVNMismatch", "OVNEdgeToEdge"])"));
    EXPECT_EQ(panel["summary"],
        Json::parse(R"({"Paper Type": "Plain", "Separator Page": "None", "Separator Page Source": "Automatic",
                        "Media Mismatch": "Use Printer Setting", "Edge to Edge": "On"})"));

    const Json& rows = panel["rows"];
    ASSERT_EQ(rows.size(), 7U);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(keysOf(rows[i]), (Words{"enabled", "hidden", "items", "keyword", "label", "labelOrigin",
                                       "popUpOrigin", "row", "selected"}));
        EXPECT_EQ(rows[i]["row"], i + 1);
    }
    EXPECT_EQ(rows[6],
        Json::parse(R"({"row": 7, "keyword": "OVNEdgeToEdge", "label": "Edge to Edge:", "enabled": true,
                        "hidden": false, "labelOrigin": [10, 41], "popUpOrigin": [190, 37], "selected": 1,
                        "items": [{"title": "Off", "keyword": "Off"}, {"title": "On", "keyword": "On"}]})"));
    EXPECT_EQ(rows[3], Json::parse(R"({"row": 4, "keyword": "OVNLastPageSource", "label": "Last Page Source:",
                        "enabled": false, "hidden": false, "labelOrigin": [10, 101], "popUpOrigin": [190, 97],
                        "selected": null, "items": []})"));
    EXPECT_EQ(rows[5]["hidden"], true);
    EXPECT_EQ(rows[5]["selected"], nullptr);
    EXPECT_EQ(rows[0]["items"].size(), 18U);
    EXPECT_EQ(rows[0]["items"][10], Json::parse(R"({"title": "Hole Punched", "keyword": "Prepunched"})"));
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
    const ProgramEnd text = orvan({"panel", "--ppd", ppd.file()});
    EXPECT_EQ(text.exitCode, 1);
    EXPECT_EQ(text.output, "");
    EXPECT_EQ(text.errors, "orvan: the PPD has none of the panel's options, so there is no panel for it\n");
}

TEST(OrvanCommand, ShowsThePanelToPeople) {
    DerivedPPD ppd;
    ppd.removeOptions({"Slipsheet", "OVNSlipSheetSource", "OVNPrintingOptimization"});
    const ProgramEnd end = orvan({"panel", "--ppd", ppd.file(), "--set", "MediaType=CustomType2"});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_EQ(end.output, "Paper Options\n\n"
                          "  Paper Type: [Custom Type 2]  of 18\n"
                          "  Separator Page: (not available)\n"
                          "  Separator Page Source: (not available)\n"
                          "  Last Page Source: [Same as Document]  of 6\n"
                          "  Media Mismatch: [Use Printer Setting]  of 5\n"
                          "  Edge to Edge: [Off]  of 2\n\n"
                          "Summary\n"
                          "  Paper Type: Custom Type 2\n"
                          "  Last Page Source: Same as Document\n"
                          "  Media Mismatch: Use Printer Setting\n"
                          "  Edge to Edge: Off\n");
    const ProgramEnd german = orvan({"panel", "--ppd", kDriver}, {{"LC_ALL", "de_DE.UTF-8"}});
    EXPECT_TRUE(german.output.starts_with("Papieroptionen\n\n  Papiertyp: [Normalpapier]  of 18\n"))
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
        {"*ModelName: \"Orvan 4500\"", "*ModelName: \"\xFF\"",
            R"({"schemaVersion": 1, "family": 0, "modelNumber": "0000"})",
            "Orvan printer, model 0000: the paper options serve it (status 0).\n"},
    };
    for (const auto& [from, to, json, text] : cases) {
        DerivedPPD ppd;
        ppd.replace(from, to);
        EXPECT_EQ(answer({"check", "--json", ppd.file()}), Json::parse(json));
        const ProgramEnd end = orvan({"check", ppd.file()});
        EXPECT_EQ(end.exitCode, 0);
        EXPECT_EQ(end.output, text);
        EXPECT_EQ(end.errors, "");
    }
}

TEST(OrvanCommand, SaysInOneLineWhatIsWrong) {
    const TempFolder folder;
    const std::string text = folder.write("text.txt", "Dear Sir or Madam\n");
    const std::string none = folder.path() / "none.ppd";
    const struct {
        Words arguments;
        int exitCode;
        std::string words; // of the message
    } cases[] = {
        {{"panel", "--ppd", none}, 1, none + ": there is no such file"},
        {{"panel", "--ppd", text}, 1, text + ": "},
        {{"check", folder.path()}, 1, "it is a folder"},
        {{"panel", "-q", "Office"}, 1, (folder.path() / "socket").string()},
        {{"panel", "--ppd", kDriver, "--set", "Unknown=x"}, 1, "no option Unknown; it has MediaType, "},
        {{"panel", "--ppd", kDriver, "--set", "OVNEdgeToEdge=Sideways"}, 1,
            "no choice Sideways; it has Off, On"},
        {{"panel", "--ppd", kDriver, "--set", "MediaType"}, 2, "\"MediaType\" is not KEYWORD=CHOICE"},
        {{"panel", "--ppd", kDriver, "--set", "MediaType="}, 2, "is not KEYWORD=CHOICE"},
        {{"panel", "--ppd", kDriver, "-q", "Office"}, 2, "--ppd,-q,--queue"},
        {{"panel", "--ppd", kDriver, "--release", "ten"}, 2, "\"ten\" is not a release"},
        {{"frobnicate"}, 2, "no command frobnicate"},
        {{}, 2, "a command is missing"},
    };
    for (const auto& [arguments, exitCode, words] : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const ProgramEnd end = orvan(arguments, {{"CUPS_SERVER", (folder.path() / "socket").string()}});
        EXPECT_EQ(end.exitCode, exitCode);
        EXPECT_EQ(end.output, "");
        EXPECT_TRUE(end.errors.starts_with("orvan: ")) << end.errors;
        EXPECT_NE(end.errors.find(words), std::string::npos) << end.errors;
        EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << end.errors;
        EXPECT_TRUE(end.errors.ends_with('\n'));
    }
}

TEST(OrvanCommand, HelpsAndNamesItself) {
    for (const Words& arguments : {Words{"--help"}, Words{"panel", "--help"}, Words{"check", "--help"}}) {
        const ProgramEnd end = orvan(arguments);
        EXPECT_EQ(end.exitCode, 0) << end.errors;
        EXPECT_NE(end.output.find("Usage:"), std::string::npos) << end.output;
    }
    EXPECT_TRUE(orvan({"--version"}).output.starts_with("orvan 1."));
    EXPECT_EQ(orvan({"panel", "--ppd", kDriver, "--release", "10.10"}).exitCode, 0);
}

} // namespace
} // namespace orvan
