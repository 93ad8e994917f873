#include "Formats/PropertyList.h"
#include "Tests/Formats/Repeated.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace platform;
using namespace std::string_literals;
using orvan::repeated;

namespace {

using List = PropertyList::List;
using Dictionary = PropertyList::Dictionary;
using Data = PropertyList::Data;
using Date = PropertyList::Date;

std::string plist(const std::string& contents) {
    return "<plist version=\"1.0\">" + contents + "</plist>";
}

std::string bigEndian(std::uint64_t value, int size) {
    std::string bytes;
    for (int i = size - 1; i >= 0; --i)
        bytes.push_back(static_cast<char>(value >> (8 * i)));
    return bytes;
}

// A binary property list of the given objects, the first of which is the root; references take one byte.
std::string binary(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += bigEndian(bytes.size(), 8);
        bytes += object;
    }
    const std::size_t tableStart = bytes.size();
    return bytes + table + "\0\0\0\0\0\0\x08\x01"s + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
           bigEndian(tableStart, 8);
}

std::string utf16(std::u16string_view text, bool bigEndianOrder) {
    std::string bytes;
    for (const char16_t unit : u"\uFEFF" + std::u16string(text)) {
        const char high = static_cast<char>(unit >> 8U);
        const char low = static_cast<char>(unit & 0xFFU);
        bytes.push_back(bigEndianOrder ? high : low);
        bytes.push_back(bigEndianOrder ? low : high);
    }
    return bytes;
}

// A list in lists, `depth` of them.
PropertyList nested(std::size_t depth) {
    PropertyList value = List();
    for (std::size_t i = 1; i < depth; ++i) {
        List list;
        list.push_back(std::move(value));
        value = std::move(list);
    }
    return value;
}

} // namespace

TEST(PropertyList, whatIsWrittenReadsBackEqual) {
    Dictionary numbered; // more objects than one byte numbers, and a count that does not fit into a marker
    for (int i = 0; i < 300; ++i)
        numbered["key " + std::to_string(i)] = "value " + std::to_string(i);
    const std::vector<PropertyList> values = {"", "plain", " \t\nspaces kept\r\n", "a<b>&\"c\"'",
        "Gr\u00FC\u00DFe \u65E5\u672C \U0001F5A8", std::string(100, 'x'), 0, 1, 255, 256, 65535, 65536,
        4294967296, -1, std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(),
        std::uint64_t{1} << 63U, std::numeric_limits<std::uint64_t>::max(), 0.0, -0.1, 1e300, 5e-324,
        std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), true, false,
        Date{0}, Date{395056800}, Date{-1}, Date{-63113904000}, Data(), Data{0}, Data{0, 255}, Data{1, 2, 3},
        Data(1000, 7), List(), Dictionary(), List{true, List{1, "1", 1.0}, Dictionary{{"", List()}}},
        Dictionary{{"same", "same"}, {"other", List{"same", "same"}}}, numbered,
        List(70000, PropertyList("one string, shared")), nested(PropertyList::kMaximumDepth)};
    for (const PropertyList& value : values) {
        platform::Failure error;
        const auto fromXML = PropertyList::read(value.writeXML(), error);
        ASSERT_TRUE(fromXML.has_value()) << error.value_or("");
        EXPECT_EQ(*fromXML, value) << value.writeXML().substr(0, 300);
        const auto fromBinary = PropertyList::read(value.writeBinary(), error);
        ASSERT_TRUE(fromBinary.has_value()) << error.value_or("");
        EXPECT_EQ(*fromBinary, value) << value.writeXML().substr(0, 300);
    }
    const std::string nan = PropertyList(std::nan("")).writeXML();
    EXPECT_TRUE(std::isnan(PropertyList::read(nan)->asReal().value()));
    // A date's fraction is in the binary form alone.
    EXPECT_EQ(PropertyList::read(PropertyList(Date{1.5}).writeBinary()), PropertyList(Date{1.5}));
    EXPECT_EQ(PropertyList::read(PropertyList(Date{-1.5}).writeXML()), PropertyList(Date{-2}));
    EXPECT_EQ(PropertyList(Date{1e300}).writeXML(), PropertyList(Date{252423993599}).writeXML());
}

TEST(PropertyList, textThatAFormCannotCarryIsReplaced) {
    const PropertyList value = "a\x01"s + "b\xFFz\0\uFFFE"s;
    EXPECT_EQ(PropertyList::read(value.writeXML()), PropertyList("a\uFFFDb\uFFFDz\uFFFD\uFFFD"));
    EXPECT_EQ(PropertyList::read(value.writeBinary()), PropertyList("a\x01"s + "b\uFFFDz\0\uFFFE"s));
}

TEST(PropertyList, readsEveryForm) {
    const std::string doctype =
        "<?xml version=\"1.0\"?>\n<!DOCTYPE plist PUBLIC \"-//Example//DTD Lists//EN\" "
        "\"http://dtd.example/lists.dtd\">\n<!-- -->";
    for (const auto& [bytes, expected] : std::vector<std::pair<std::string, PropertyList>>{
             // Text.
             {"/* all */ \"paper\" = \"Plain\\nPaper\"; // end\nkey = value;\nalone;",
                 Dictionary{{"paper", "Plain\nPaper"}, {"key", "value"}, {"alone", "alone"}}},
             {R"('\"\\\'\a\t\q' = "\101\7\12x\377\U00e9\Ud83d\UDDA8";)",
                 Dictionary{{"\"\\'\a\tq", "A\a\nx\u00FF\u00E9\xF0\x9F\x96\xA8"}}},
             {"{ a = (1, two, ( ), {b = <0aF F>; }, ); c.d-/:$_ = 'x'; }",
                 Dictionary{
                     {"a", List{"1", "two", List(), Dictionary{{"b", Data{10, 255}}}}}, {"c.d-/:$_", "x"}}},
             {"\xEF\xBB\xBFk = \"\u00FC\";", Dictionary{{"k", "\u00FC"}}},
             {utf16(u"k = \"\u00FC\U0001F5A8\";", true), Dictionary{{"k", "\u00FC\U0001F5A8"}}},
             {utf16(u"k = \"\u00FC\U0001F5A8\";", false), Dictionary{{"k", "\u00FC\U0001F5A8"}}},
             {"a = 1; b = 2; a = 3;", Dictionary{{"a", "3"}, {"b", "2"}}},
             {"// nothing\n", Dictionary()},
             {" (a, b)\n", List{"a", "b"}},
             {"<00 ff>", Data{0, 255}},
             // XML.
             {doctype + plist("<string>a&amp;<![CDATA[<b>]]>&#xE9;<!-- no --></string>"), "a&<b>\u00E9"},
             {plist("<integer> -0x10\n</integer>"), -16},
             {plist("<integer>+18446744073709551615</integer>"), std::numeric_limits<std::uint64_t>::max()},
             {plist("<real>+1.5E3</real>"), 1500.0},
             {plist("<date> 2000-02-29T23:59:59Z </date>"), Date{-26438401}},
             {plist("<data>\n\tAAEC\n\t/w==\n</data>"), Data{0, 1, 2, 255}},
             {plist("<dict><key>a</key><array/><key>a</key><true/></dict>"), Dictionary{{"a", true}}},
             {"<?xml version='1.0' encoding='ISO-8859-1'?>" + plist("<string>\xFC</string>"), "\u00FC"},
             {utf16(u"<?xml version='1.0' encoding='UTF-16'?><plist><string>\u00FC</string></plist>", false),
                 "\u00FC"},
             // Binary.
             {binary({"\xD1\x01\x02", "\x51k", "\xA2\x03\x03", "\x09"}), Dictionary{{"k", List{true, true}}}},
             {binary({"\x5F\x10\x02"s + "ab"}), "ab"},
             {binary({"\x73\xE2\x82\xAC"}), "\u20AC"},
             {binary({"\x62\xD8\x3D\xDD\xA8"s}), "\U0001F5A8"},
             {binary({"\x22\x3F\xC0\0\0"s}), 1.5},
             {binary({"\x11\xFF\xFF"s}), 65535},
             {binary({"\x14" + std::string(16, '\xFF')}), -1},
             {binary({"\xD2\x01\x01\x02\x03", "\x51k", "\x08", "\x09"}), Dictionary{{"k", true}}},
         }) {
        platform::Failure error;
        const auto value = PropertyList::read(bytes, error);
        ASSERT_TRUE(value.has_value()) << bytes << ": " << error.value_or("");
        EXPECT_EQ(*value, expected) << bytes << " became " << value->writeXML();
    }
}

TEST(PropertyList, refusalsSayWhatAndWhere) {
    const std::string half = "\xD8\x3D"s;
    for (const auto& [bytes, words] : std::vector<std::pair<std::string, std::string>>{
             {"", "nothing in it"},
             {"\xEF\xBB\xBF", "nothing in it"},
             {"k = \"\xC0\xAF\";", "byte 5 is not UTF-8"},
             {"\xFE\xFF\0k\xD8\x00\0;"s, "byte 4 is not UTF-16"},
             {"\xFF\xFEk\0;"s, "byte 4 is not UTF-16"},
             // Text.
             {"a = 1;\n\u00FC\u00FC = 2;", "line 2, column 1: neither a string"},
             {"a = 1;\nb = \"\u00FC\" 2;", "line 2, column 9: a ';' is missing"},
             {"a = \"x", "line 1, column 5: a string is not closed"},
             {"a = \"x\\", "a string is not closed"},
             {"{ a = (1, 2;", "a ',' is missing"},
             {"( a", "line 1, column 1: a list is not closed"},
             {"{ a = b;", "line 1, column 1: a dictionary is not closed"},
             {"{ a = ", "a value is missing"},
             {"a = 1; }", "closes nothing"},
             {"{ } { }", "more after the value"},
             {"{ (a) = b; }", "neither a string"},
             {"<abc", "data is not closed"},
             {"<zz>", "hexadecimal"},
             {"<0f0>", "column 5: data ends in the middle of a byte"},
             {"a /* b", "a comment is not closed"},
             {R"(a = "\Ud83d";)", "column 6: half a surrogate"},
             {R"(a = "\Udda8";)", "half a surrogate"},
             {R"(a = "\Ud83d\U0041";)", "half a surrogate"},
             {R"(a = "\U12";)", "four hexadecimal"},
             {R"(a = "\400";)", "above \\377"},
             {std::string(200000, '('), "column 513: it nests too deep"},
             {repeated("{a=", 200000), "nests too deep"},
             // XML.
             {plist(""), "has no value"},
             {"<!-- --><dict/>", "is not <plist>"},
             {plist("<true/><true/>"), "more than one value"},
             {plist("<true/>") + plist("<true/>"), "junk after document element"},
             {plist("<set/>"), "not an element"},
             {plist("<plist><true/></plist>"), "inside <plist>"},
             {plist("<array>\n<key>a</key></array>"), "line 2, column 1: <key> stands outside"},
             {plist("<array>a</array>"), "text between the values"},
             {plist("<dict><true/></dict>"), "no key before it"},
             {plist("<dict><key>a</key></dict>"), "the key \"a\" has no value"},
             {plist("<dict><key>a</key><key>b</key></dict>"), "the key \"a\" has no value"},
             {plist("<string>a<true/></string>"), "inside <string>"},
             {plist("<true>1</true>"), "text in a boolean"},
             {plist("<integer>18446744073709551616</integer>"), "not an integer"},
             {plist("<integer>-9223372036854775809</integer>"), "not an integer"},
             {plist("<integer>1 2</integer>"), "not an integer"},
             {plist("<integer/>"), "not an integer"},
             {plist("<real>1,5</real>"), "\"1,5\" is not a number"},
             {plist("<date>2013-02-29T00:00:00Z</date>"), "not a date"},
             {plist("<date>2013-02-28T24:00:00Z</date>"), "not a date"},
             {plist("<date>nan</date>"), "not a date"},
             {plist("<data>AAE</data>"), "not base 64"},
             {plist("<data>A===</data>"), "not base 64"},
             {plist("<data>AA==AA==</data>"), "not base 64"},
             {plist("<data>AA*A</data>"), "not base 64"},
             {plist("<string>\xFF</string>"), "not well-formed"},
             {"<!DOCTYPE plist SYSTEM 'file:///etc/passwd'>" + plist("<string>&a;</string>"),
                 "\"a\" is not defined"},
             {"<!DOCTYPE plist [<!ENTITY a 'b'>]>" + plist("<string>&a;</string>"), "internal subset"},
             {"<?xml version='1.0' encoding='x-other'?>" + plist("<true/>"), "unknown encoding"},
             {"<plist>" + repeated("<array>", 200000), "nests too deep"},
             {repeated("<plist>", 200000), "inside <plist>"},
             // Binary.
             {"bplist00", "shorter"},
             {binary({"\x09"}) + "\n", "trailer"},
             {"bplist15" + binary({"\x09"}).substr(8), "begin"},
             {binary({}), "no object 0"},
             {binary({"\xA1\x01", "\xA1\x00"s}), "object 0 at byte 8: it contains itself"},
             {binary({"\xD1\x01\x00"s, "\x51k"}), "contains itself"},
             {binary({"\xA1\x05"}), "no object 5"},
             {binary({"\xD1\x01\x02", "\x10\x05", "\x09"}),
                 "object 1 at byte 11: it is the key of a dictionary"},
             {binary({"\x59hi"}), "run past the end"},
             {binary({"\x69hi"}), "run past the end"},
             {binary({"\xAF\x13" + bigEndian(std::uint64_t{1} << 62U, 8)}), "run past the end"},
             {binary({"\x6F\x13" + bigEndian(std::uint64_t{1} << 63U, 8)}), "run past the end"},
             {binary({"\xDF\x13" + bigEndian(~std::uint64_t{0}, 8)}), "run past the end"},
             {binary({"\x4F\x14"}), "count is not an integer"},
             {binary({"\x4F\x13\x00"s}), "count is cut off"},
             {binary({"\x13\x00"s}), "cut off"},
             {binary({"\x14\x01"s + std::string(15, '\0')}), "more than 64 bits"},
             {binary({"\x23\x00"s}), "cut off"},
             {binary({"\x33\x7F\xF8\0\0\0\0\0\0"s}), "a date outside"},
             {binary({"\x33\x7F\xF0\0\0\0\0\0\0"s}), "a date outside"},
             {binary({"\x61" + half}), "half a surrogate"},
             {binary({"\x61\xDD\xA8"}), "half a surrogate"},
             {binary({"\x51\xFC"}), "not ASCII"},
             {binary({"\x71\xFC"}), "not UTF-8"},
             {binary({"\x80\x01"}), "kind 8"},
             {binary({"\x00"s}), "neither false nor true"},
         }) {
        platform::Failure error;
        EXPECT_FALSE(PropertyList::read(bytes, error).has_value()) << bytes.substr(0, 100);
        EXPECT_NE(error.value_or("").find(words), std::string::npos)
            << bytes.substr(0, 100) << "\nsays: " << error.value_or("") << "\nnot: " << words;
    }
}

TEST(PropertyList, damagedFilesAreReadOrRefused) {
    const std::string whole = PropertyList(List{"a", Dictionary{{"k", 1}}, Data{1, 2}}).writeBinary();
    for (std::size_t at = 0; at < whole.size(); ++at) {
        // The first letters alone are a text.
        EXPECT_EQ(PropertyList::read(whole.substr(0, at)).has_value(), at > 0 && at < 6) << "cut to " << at;
        for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            std::string damaged = whole;
            damaged[at] = static_cast<char>(value);
            platform::Failure error;
            const bool isRead = PropertyList::read(damaged, error).has_value();
            EXPECT_NE(isRead, error.has_value()) << at << ": " << error.value_or("");
        }
    }
}

TEST(PropertyList, sharedObjectsDoNotExplode) {
    // Each list holds the next one ten times.
    std::vector<std::string> lists;
    for (char i = 1; i <= 20; ++i)
        lists.push_back("\xAA" + std::string(10, i));
    lists.push_back("\x09");
    // A megabyte of text that is referred to 60 000 times.
    const std::string text = "\x5F\x12" + bigEndian(1000000, 4) + std::string(1000000, 'x');
    const std::string many = "\xAF\x12" + bigEndian(60000, 4) + std::string(60000, '\x01');
    for (const auto& [bytes, part] : {std::pair{binary(lists), "more values"},
             {binary({many, text}), "more text"}, {"(" + repeated("a,", 3U << 20U) + ")", "too many values"},
             {nested(PropertyList::kMaximumDepth + 1).writeBinary(), "too deep"}}) {
        platform::Failure error;
        EXPECT_FALSE(PropertyList::read(bytes, error).has_value());
        EXPECT_NE(error.value_or("").find(part), std::string::npos) << error.value_or("");
    }
}
