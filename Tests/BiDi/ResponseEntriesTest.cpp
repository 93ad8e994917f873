#include "BiDi/ResponseEntries.h"

#include <gtest/gtest.h>

#include <vector>

namespace orvan {
namespace {

TEST(ResponseEntries, AreThePiecesOfResponseLines) {
    struct Case {
        std::string_view output;
        EntryDictionary entries;
    };
    using namespace std::string_view_literals;
    const std::vector<Case> cases = {
        {"", {}},
        {"PPD: A0000=xyz B0000=uvw\n", {{"A0000", "xyz"}, {"B0000", "uvw"}}},
        {"PPD: K0000=ab==", {{"K0000", "ab=="}}},
        {"PPD: K=1\nPPD: K=2\n", {{"K", "2"}}},
        {"PPD: K=2 K=", {{"K", ""}}},
        {"PPD: K0001=\"\"", {{"K0001", "\"\""}}},
        {"PPD: =v word", {{"", "v"}}},
        {"PPD:K=1\nDEBUG: K=1\n PPD: K=1\nppd: K=1\nPPD:\tK=1\nPPD", {}},
        {"PPD: A=1\r\nPPD: B=2\vPPD: C=3\fPPD: D=4\u0085PPD: E=5\u2028PPD: F=6\u2029PPD: G=7",
            {{"A", "1"}, {"B", "2"}, {"C", "3"}, {"D", "4"}, {"E", "5"}, {"F", "6"}, {"G", "7"}}},
        {"PPD: A=1\tB=2\u00A0C=3\u2003D=4\u3000E=5\u200BF",
            {{"A", "1"}, {"B", "2"}, {"C", "3"}, {"D", "4"}, {"E", "5\u200BF"}}},
        {"PPD: A=1\nPPD: B=\xFF\n", {}},
        {"PPD: A=x\0y B=2"sv, {{"A", "x\0y"sv}, {"B", "2"}}},
    };
    for (const Case& test : cases)
        EXPECT_TRUE(entriesInTaskOutput(test.output) == test.entries) << test.output;

    const std::string longLine = "PPD: K=" + std::string(5000, 'x');
    EXPECT_EQ(entriesInTaskOutput(longLine).find("K")->value.size(), 5000U);
}

TEST(ResponseEntries, AreLookedUpByKeyword) {
    EntryDictionary entries = {{"K", "v"}};
    EXPECT_STREQ(ppdx_get_chunk_nsdictionary(&entries, "K"), "v");
    EXPECT_EQ(ppdx_get_chunk_nsdictionary(&entries, "k"), nullptr);
    EXPECT_EQ(ppdx_get_chunk_nsdictionary(&entries, nullptr), nullptr);
    EXPECT_EQ(ppdx_get_chunk_nsdictionary(nullptr, "K"), nullptr);
    EXPECT_EQ(ppdx_get_chunk_ppd(nullptr, "K"), nullptr);
}

} // namespace
} // namespace orvan
