#include "PrintDialog/Host/Mnemonics.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvan {
namespace {

TEST(Mnemonics, AreUniqueAndWhereThePersonLooks) {
    struct Row {
        const char* title;
        const char* latin;
        const char* marked;
    };
    const struct {
        const char* taken;
        std::vector<Row> rows;
    } cases[] = {
        {"", {{"Paper Type:", "", "_Paper Type:"}, {"Paper Size:", "", "Paper _Size:"},
                 {"Paper:", "", "P_aper:"}, {"A_B", "", "A___B"}}},
        {"cp", {{"Copies", "", "C_opies"}, {"Cop", "", "Cop"}}},
        {"", {{"\u00c4nderung", "", "\u00c4_nderung"}, {"12", "", "12"}}},
        {"m", {{"\u7528\u7d19\u306e\u7a2e\u985e:", "MediaType", "\u7528\u7d19\u306e\u7a2e\u985e (_E):"},
                  {"\u8a73\u7d30", "Details", "\u8a73\u7d30 (_D)"}}},
    };
    for (const auto& [taken, rows] : cases) {
        Mnemonics mnemonics(taken);
        for (const Row& row : rows)
            EXPECT_EQ(mnemonics.titled(row.title, row.latin).withMarker('_'), row.marked);
    }
}

} // namespace
} // namespace orvan
