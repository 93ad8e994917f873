#include "Formats/TextEncoding.h"

#include <gtest/gtest.h>

using namespace platform;

TEST(TextEncoding, decodesOnlyWhatIsValid) {
    using namespace std::string_view_literals;
    const struct {
        std::string_view bytes;
        bool utf8;
        bool ascii;
    } cases[] = {
        {"\0a\0b\x7F"sv, true, true},
        {"Gr\xC3\xB6\xC3\x9F \xF0\x9F\x96\xA8"sv, true, false},
        {"\xC3"sv, false, false},
        {"\xC0\xAF"sv, false, false},         // longer than it has to be
        {"\xED\xA0\x80"sv, false, false},     // a surrogate
        {"\xF4\x90\x80\x80"sv, false, false}, // above U+10FFFF
        {"\xC3\0\xB6"sv, false, false},
    };
    for (const auto& [bytes, utf8, ascii] : cases) {
        EXPECT_EQ(decodeUTF8(bytes), utf8 ? std::optional(std::string(bytes)) : std::nullopt)
            << testing::PrintToString(bytes);
        EXPECT_EQ(decodeASCII(bytes), ascii ? std::optional(std::string(bytes)) : std::nullopt)
            << testing::PrintToString(bytes);
    }
}

TEST(TextEncoding, writesLatin1WhereItCan) {
    EXPECT_EQ(encodeLatin1("B\xC3\xBCro \xC3\xBF"), "B\xFCro \xFF");
    EXPECT_EQ(encodeLatin1("\xC4\x80"), std::nullopt);
    EXPECT_EQ(encodeLatin1("B\xFCro"), std::nullopt);
}

TEST(TextEncoding, cutsBetweenCharacters) {
    EXPECT_EQ(prefixOfUTF8("Büro", 10), "Büro");
    EXPECT_EQ(prefixOfUTF8("Büro", 3), "Bü");
    EXPECT_EQ(prefixOfUTF8("Büro", 2), "B");
    EXPECT_EQ(prefixOfUTF8("\xF0\x9F\x96\xA8", 3), "");
}
