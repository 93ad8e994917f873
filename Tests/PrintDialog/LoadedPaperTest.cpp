#include "PrintDialog/Host/LoadedPaper.h"

#include "Common/TicketVocabulary.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace orvan {
namespace {

using platform::PropertyList;

struct TrayRecord {
    const char* name;
    std::int64_t level;
    const char* size;
    const char* paper;
};
using Trays = std::vector<TrayRecord>;

PropertyList answerOf(const Trays& trays) {
    PropertyList::List list;
    for (const TrayRecord& tray : trays)
        list.push_back(PropertyList(PropertyList::Dictionary{{std::string(OVCPSSTrayName), tray.name},
            {std::string(OVCPSSTrayLevel), tray.level},
            {std::string(OVCPSSMedia),
                PropertyList(PropertyList::Dictionary{
                    {std::string(kPageSize), tray.size}, {std::string(kMediaType), tray.paper}})}}));
    PropertyList::List papers{
        PropertyList(PropertyList::Dictionary{{"name", "Certificates"}, {"type", "3"}})};
    return PropertyList(
        PropertyList::Dictionary{{std::string(OVCPSSInputTrays), PropertyList(std::move(list))},
            {std::string(OVOVGCustomPaperTypes), PropertyList(std::move(papers))}});
}

TEST(LoadedPaper, IsSaidWhenNoTrayHoldsIt) {
    platform::Failure error;
    const DerivedPPD file;
    const auto ppd = DialogPPD::open(file.file(), error);
    ASSERT_NE(ppd, nullptr) << error.value_or("");
    using namespace std::chrono_literals;
    struct Case {
        const char* name;
        Trays trays;
        const char* paper = "CustomType5";
        const char* size = "A4";
        const char* slot = "Auto";
        std::optional<std::chrono::seconds> age = 60s;
        std::string says = {};
    };
    const Trays plain{{"Tray1", 100, "A4", "Plain"}, {"Tray2", 30, "A3", "CustomType3"}};
    const std::string holds = "Tray 1 holds “Plain” A4, Tray 2 holds “Certificates” A3.";
    for (const Case& c : {
             Case{.name = "another paper",
            .trays = plain,
            .says = "No tray holds “Custom Type 5” in A4; " + holds},
             Case{.name = "the same paper in another size",
             .trays = plain,
             .paper = "CustomType3",
             .says = "No tray holds “Custom Type 3” in A4; " + holds},
             Case{.name = "in another tray", .trays = plain, .paper = "CustomType3", .size = "A3"},
             Case{.name = "an empty tray holds nothing",
             .trays = {{"Tray1", 0, "A4", "Plain"}},
             .paper = "Plain",
             .says = "No tray holds “Plain” in A4; Tray 1 is empty."},
             Case{.name = "no trays", .trays = {}},
             Case{.name = "unknown level",
             .trays = {{"Tray1", 100, "A4", "Plain"}, {"Tray2", -1, "A3", "Plain"}}},
             Case{.name = "unknown size", .trays = {{"Tray1", 100, "Unspecified", "Plain"}}},
             Case{.name = "unknown paper", .trays = {{"Tray1", 100, "A4", "Unspecified"}}},
             Case{.name = "a size of the application's own", .trays = plain, .size = ""},
             Case{.name = "a tray that was picked", .trays = plain, .slot = "Tray1"},
             Case{.name = "told just in time",
             .trays = plain,
             .age = 9min,
             .says = "No tray holds “Custom Type 5” in A4; " + holds},
             Case{.name = "told too long ago", .trays = plain, .age = 11min},
             Case{.name = "told nobody knows when", .trays = plain, .age = std::nullopt},
         }) {
        ppd->mark("MediaType", c.paper);
        ppd->mark("InputSlot", c.slot);
        StoredAnswer answer{.command = "com.orvan.DeviceStatus", .list = answerOf(c.trays)};
        if (c.age) answer.askedAt = std::chrono::system_clock::now() - *c.age;
        EXPECT_EQ(notLoadedText({answer}, *ppd, c.size), c.says) << c.name;
    }
    EXPECT_EQ(notLoadedText({}, *ppd, "A4"), "");
}

} // namespace
} // namespace orvan
