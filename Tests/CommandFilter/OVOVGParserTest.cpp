#include "CommandFilter/OVOVGParser.h"
#include "CommandFilter/OVCPSSParser.h"
#include "CommandFilter/OVSNMPParser.h"
#include "Orvan/PropertyListJson.h"
#include "Tests/Support/SystemLog.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace orvan {
namespace {

using Json = nlohmann::json;

Json json(const Ticket& ticket) {
    return Json::parse(jsonFromPropertyList(ticket).dump());
}

Json ticketOf(const std::string& sections, Ticket ticket = {}) {
    const auto parser = OVOVGParser::initWithData("<?xml version='1.0'?><any>" + sections + "</any>");
    if (parser == nullptr) return "no document";
    parser->writeToTicket(ticket);
    return json(ticket);
}

std::string printer(const std::string& section, const std::string& content) {
    return "<" + section + "><printer>" + content + "</printer></" + section + ">";
}

void expectTickets(std::initializer_list<std::pair<std::string, const char*>> cases) {
    for (const auto& [sections, expected] : cases)
        EXPECT_EQ(ticketOf(sections), Json::parse(expected)) << sections;
}

TEST(OVOVGParser, ReadsTrays) {
    const auto trays = [](const std::string& content) {
        return printer("deviceStatus", "<inputTrays>" + content + "</inputTrays>");
    };
    expectTickets({
        {trays("<x><name>Tray 1 (MPT)</name><status>NearEmpty</status><paperSize>B5 JIS</paperSize>"
               "<paperType>Plain Paper</paperType></x>"),
            R"({"input-trays-col": [{"tray-name": "Tray1", "tray-level": 30,
                "media-col": {"PageSize": "B5", "MediaType": "Plain"}}]})"},
        {trays("<t><paperSize>Post Card(4 x 6\")</paperSize></t><!-- --><t/>"
               "<t><status>full</status><paperType>Custom <b>Type</b> 6</paperType><name>Tray 6</name></t>"),
            R"({"input-trays-col": [{"media-col": {"PageSize": "PostCard4x6"}}, {},
                {"tray-level": -1, "media-col": {"MediaType": "Unspecified"}, "tray-name": "Unspecified"}]})"},
        {trays("<t><status>Low</status><status>Not Full</status><name> Tray 1</name></t>"),
            R"({"input-trays-col": [{"tray-level": 60, "tray-name": "Unspecified"}]})"},
        {trays("<t/>") + trays(""), R"({"input-trays-col": []})"},
        {"<deviceStatus><inputTrays><t/></inputTrays></deviceStatus><DeviceStatus/>", "{}"},
    });
}

TEST(OVOVGParser, ReadsSupplies) {
    const auto supply = [](const char* name, const char* status) {
        return printer("deviceStatus", std::string("<supplies><s><name>") + name + "</name><status>" +
                                           status + "</status></s></supplies>");
    };
    expectTickets({
        {supply("Magenta or Cyan Toner", "OK"),
            R"({"colorant-housing-col": [{"colorant": "cyan", "colorant-type": "toner", "colorant-level": 100}]})"},
        {supply("Solid InkBlack", " \t-35%"),
            R"({"colorant-housing-col": [{"colorant": "black", "colorant-type": "solid-ink", "colorant-level": -35}]})"},
        {supply("Yellow", "Low"),
            R"({"colorant-housing-col": [{"colorant": "yellow", "colorant-level": 0}]})"},
        {supply("Black", "99999999999999999999"),
            R"({"colorant-housing-col": [{"colorant": "black", "colorant-level": 2147483647}]})"},
        {supply("black Toner", "OK"), R"({"colorant-housing-col": []})"},
    });
}

TEST(OVOVGParser, ReadsCustomPaperTypesAndStoredJobs) {
    expectTickets({
        {printer("customPaperTypes",
             "<customPaperType><name>Büttenpapier</name><type>1</type>"
             "<baseClass>Plain</baseClass></customPaperType><other/>"
             "<customPaperType><type>2</type><!-- --><type>3</type>text</customPaperType>"),
            R"({"customPaperTypes": [{"name": "Büttenpapier", "type": "1", "baseClass": "Plain"}, {"type": "3"}]})"},
        {printer("customPaperTypes", ""), R"({"customPaperTypes": []})"},
        {"<customPaperTypes/><storedJobs/>", "{}"},
        {printer("storedJobs", ""), R"({"OVSavedJobs": []})"},
        {printer("storedJobs", "<sharedJobs><j><name>Menu</name><id>7</id></j></sharedJobs>"
                               "<personalJobs><j/><k><id>x</id></k></personalJobs>"),
            R"({"OVSavedJobs": [{"OVJobName": "Menu", "OVJobID": "7", "OVSaveContext": "Public"},
                {"OVSaveContext": "Private"}, {"OVJobID": "x", "OVSaveContext": "Private"}]})"},
    });
}

TEST(OVOVGParser, LogsStoredJobs) {
    logLines.clear();
    unsetenv("ORVAN_TRACE");
    const std::string jobs = printer("storedJobs", "<a b='c'/><personalJobs>x</personalJobs>");
    ticketOf(jobs);
    EXPECT_EQ(logLines, (std::vector<std::string>{"orvan: saved job (not shown without ORVAN_TRACE)",
                            "orvan: child job (not shown without ORVAN_TRACE)",
                            "orvan: child job (not shown without ORVAN_TRACE)"}));
    logLines.clear();
    setenv("ORVAN_TRACE", "1", 1);
    ticketOf(jobs);
    unsetenv("ORVAN_TRACE");
    EXPECT_EQ(
        logLines, (std::vector<std::string>{
                      "orvan: saved job <printer><a b=\"c\"/><personalJobs>x</personalJobs></printer>",
                      "orvan: child job <a b=\"c\"/>", "orvan: child job <personalJobs>x</personalJobs>"}));
}

TEST(OVOVGParser, ReadsColorModesByTheirPositions) {
    const auto modes = [](const std::string& count, const std::string& children) {
        return "<MULTIRSP" + count + ">" + children + "</MULTIRSP>";
    };
    const std::string mode = "<M><INSTANCE><P NAME='n' X='y'>v<q>w</q></P><P>-</P></INSTANCE><INSTANCE/></M>";
    const char* const one = R"({"OVDSColorCorrection": [{"n": "vw"}, {}]})";
    const char* const none = R"({"OVDSColorCorrection": []})";
    expectTickets({
        {modes(" ColorModeCount='1'", "<zero/>" + mode), one},
        {modes(" ColorModeCount='1'", "<!-- zero -->" + mode + mode), one},
        {modes(" ColorModeCount='2'", "zero<!-- one -->" + mode), one},
        {modes(" ColorModeCount=' +1x'", mode + "<!-- one -->" + mode), none},
        {modes(" ColorModeCount='2147483648'", "<zero/>" + mode), one},
        {modes(" ColorModeCount='0'", "<zero/>" + mode), none},
        {modes(" ColorModeCount='-1'", "<zero/>" + mode), none},
        {modes(" ColorModeCount='one'", "<zero/>" + mode), none},
        {modes("", "<zero/>" + mode), none},
        {modes(" ColorModeCount='1'", "<zero/><M><X><INSTANCE/></X></M>"), none},
    });
}

TEST(OVOVGParser, ReadsPermissionsUntilThePinIsNotSet) {
    const std::string noPin = "<colorAccessPinSet>NO</colorAccessPinSet>";
    const std::string noColor = "<userColorPermissions>NO</userColorPermissions>";
    const auto both = [](const char* shown, const char* only) {
        return Json::parse(
            R"([{"showColorAccess": ")" + std::string(shown) + R"("}, {"bBWOnly": ")" + only + R"("}])");
    };
    const std::pair<std::string, Json> cases[] = {
        {"", both("YES", "NO")},
        {noColor + noPin, both("NO", "YES")},
        {noPin + noColor, both("NO", "NO")},
        {"<colorAccessPinSet>no</colorAccessPinSet>" + noColor, both("YES", "YES")},
        {noColor + "<userColorPermissions>YES</userColorPermissions>", both("YES", "NO")},
    };
    for (const auto& [children, expected] : cases)
        EXPECT_EQ(
            ticketOf("<permissions>" + children + "</permissions>"), Json({{"colorPermissions", expected}}))
            << children;
}

TEST(OVOVGParser, LeavesTheRestOfTheTicketAlone) {
    const Ticket before{{"customPaperTypes", "old"}, {"OVSavedJobs", "old"}, {"x", 1}};
    EXPECT_EQ(ticketOf(printer("customPaperTypes", ""), before),
        Json::parse(R"({"customPaperTypes": [], "OVSavedJobs": "old", "x": 1})"));
    Ticket ticket = before;
    OVOVGParser::initWithDocument(nullptr)->writeToTicket(ticket);
    EXPECT_EQ(ticket, before);
}

TEST(OVOVGParser, RefusesWhatIsNoDocumentWithOneLogLine) {
    for (const char* const bytes : {"", "<!DOCTYPE a [<!ENTITY e 'eeeeee'>]><a>&e;</a>"}) {
        logLines.clear();
        platform::Failure error;
        EXPECT_EQ(OVOVGParser::initWithData(bytes, error), nullptr);
        EXPECT_EQ(logLines, std::vector<std::string>{"orvan: Could not parse " + error.value_or("")});
        EXPECT_NE(error, "");
    }
}

TEST(OVOVGParser, TranslatesAbsentWords) {
    const auto parser = OVOVGParser::initWithDocument(nullptr);
    EXPECT_EQ(parser->keyForTray(std::nullopt), "Unspecified");
    EXPECT_EQ(parser->levelForTrayStatus(std::nullopt), -1);
}

TEST(OVCPSSParser, TranslatesKeywordsBothWays) {
    const OVCPSSParser parser;
    EXPECT_EQ(*parser.keyForCPSSColor("custom3"), "CustomColor3");
    EXPECT_EQ(*parser.keyForCPSSType("custom3"), "CustomType3");
    EXPECT_EQ(*parser.keyForCPSSTray("post-fuser-inserter"), "PFI1");
    EXPECT_EQ(parser.keyForCPSSType("glossy"), nullptr); // it is a coating
    EXPECT_EQ(parser.keyForCPSSTray(std::nullopt), nullptr);
    EXPECT_EQ(*OVCPSSParser::typeMap().keyForObject("HeavyCard"), "cardstock-heavyweight");
    // Nothing was lost to a row that has a half of another.
    EXPECT_EQ(OVCPSSParser::typeMap().count(), 63U);
    EXPECT_EQ(OVCPSSParser::colorMap().count(), 21U);
}

TEST(OVSNMPParser, CopiesTheJobAccountingNumber) {
    const std::string key(OVSNMPJobAccountingOID);
    const std::pair<platform::PropertyList, std::int64_t> cases[] = {{"2", 2}, {2, 2}, {" +7 jobs", 7},
        {"none", 0}, {2.9, 2}, {-3000000000LL, std::numeric_limits<std::int32_t>::min()}, {true, 1},
        {false, 0}, {"4294967296", std::numeric_limits<std::int32_t>::max()},
        {platform::PropertyList::List(), 0}};
    for (const auto& [value, expected] : cases) {
        const Ticket response{{"1.3.6", 5}, {key, value}, {key + ".0", 6}};
        Ticket ticket{{key, "old"}, {"x", 1}};
        OVSNMPParser(&response).writeToTicket(ticket);
        EXPECT_EQ(ticket, (Ticket{{key, expected}, {"x", 1}}));
    }
    const Ticket others{{key + ".0", 1}, {"1.3.6.1", 2}};
    Ticket ticket;
    OVSNMPParser(&others).writeToTicket(ticket);
    OVSNMPParser(nullptr).writeToTicket(ticket);
    EXPECT_TRUE(ticket.empty());
}

} // namespace
} // namespace orvan
