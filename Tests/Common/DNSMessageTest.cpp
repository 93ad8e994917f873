#include "Common/DNSMessage.h"
#include "Common/Utilities/PrinterURL.h"
#include "Tests/Formats/Repeated.h"
#include "Tests/Support/DNSParts.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <vector>

namespace orvan {
namespace {

using namespace dns;
using namespace std::string_literals;

constexpr const char* kInvalid = "\ndecode error, compression offset invalid!\n";
constexpr const char* kLoop = "\ndecode error, compression offset yields loop!\n";
constexpr const char* kPastEnd = "\ndecode error, name extends past end of packet\n";
constexpr const char* kRanOff = "decode error, ran off the buffer\n";
constexpr const char* kNoRecord = "decode error, packet too short for type, class, ttl, and length\n";
constexpr const char* kNoData = "decode error, packet too short for reported rr length\n";

struct Reading {
    const char* what;
    std::string message;
    std::size_t start;
    int code;
    std::string result;
    const char* output;
    std::size_t position; // afterwards
};

// A copy of exactly the message's size, so that a read past its end is seen.
std::vector<std::uint8_t> exactly(const std::string& message) {
    return {message.begin(), message.end()};
}

void expectReading(const Reading& expected, const std::function<int(std::size_t*, DNSBytes)>& reader) {
    std::size_t position = expected.start;
    testing::internal::CaptureStdout();
    const int code = reader(&position, exactly(expected.message));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected.output);
    EXPECT_EQ(code, expected.code);
    EXPECT_EQ(position, expected.position);
}

TEST(DNSMessage, decodesNames) {
    const std::string longest = repeated(label("abc"), 63) + label("d") + '\0'; // 255 bytes
    const Reading cases[] = {
        {"labels", name("printer.local.") + "x", 0, 0, "printer.local.", "", 15},
        {"the root", "\0"s, 0, 0, "", "", 1},
        {"bytes as they are", label("a.\\ \xC3\0"s) + '\0', 0, 0, "a.\\ \xC3\0."s, "", 8},
        {"63 bytes", label(std::string(63, 'x')) + '\0', 0, 0, std::string(63, 'x') + ".", "", 65},
        {"labels and a pointer", name("local.") + label("a") + pointer(0) + "x", 7, 0, "a.local.", "", 11},
        {"a pointer", name("local.") + pointer(0) + "x", 7, 0, "local.", "", 9},
        {"pointers in a row", name("a.") + pointer(0) + pointer(3) + pointer(5), 7, 0, "a.", "", 9},
        {"255 bytes", longest, 0, 0, repeated("abc.", 63) + "d.", "", 255},
        {"to itself", pointer(0), 0, kNameLoop, "", kLoop, 2},
        {"to itself, further on", "xx" + pointer(2), 2, kNameLoop, "", kLoop, 4},
        {"to its own labels", label("a") + pointer(0), 0, kNameLoop, "a.", kLoop, 4},
        {"in a circle of two", label("a") + pointer(4) + label("b") + pointer(0), 4, kNameLoop, "b.a.", kLoop,
            8},
        {"up and down below it", pointer(2) + pointer(0) + pointer(2), 4, kNameLoop, "", kLoop, 6},
        {"forward behind it", name("a.") + pointer(5) + label("b") + pointer(0) + pointer(3), 9, 0, "b.a.",
            "", 11},
        {"forward", pointer(2) + name("a."), 0, kNameOffsetInvalid, "", kInvalid, 2},
        {"past the end", pointer(0x3FFF), 0, kNameOffsetInvalid, "", kInvalid, 2},
        {"half a pointer", "\xC0", 0, kNamePastEnd, "", kPastEnd, 0},
        {"nothing", "", 0, kNamePastEnd, "", kPastEnd, 0},
        {"from outside", name("a."), 1000, kNamePastEnd, "", kPastEnd, 1000},
        {"from far outside", name("a."), ~std::size_t{0}, kNamePastEnd, "", kPastEnd, ~std::size_t{0}},
        {"no zero byte", label("local"), 0, kNamePastEnd, "", kPastEnd, 0},
        {"a cut label", "\5loca", 0, kNamePastEnd, "", kPastEnd, 0},
        {"length 64", label(std::string(64, 'x')) + '\0', 0, kNameLabelInvalid, "",
            "\ndecode error, label longer than 63 bytes\n", 0},
        {"256 bytes", label("de") + longest.substr(0, 252) + '\0', 0, kNameTooLong,
            "de." + repeated("abc.", 62), "\ndecode error, name longer than 255 bytes\n", 0},
    };
    for (const Reading& expected : cases) {
        SCOPED_TRACE(expected.what);
        std::string text = "before";
        expectReading(expected,
            [&](std::size_t* position, DNSBytes message) { return decode_name(position, message, &text); });
        EXPECT_EQ(text, expected.result);
    }
}

TEST(DNSMessage, saysWhatIsWrongToWhoeverListens) {
    std::vector<std::string> said;
    testing::internal::CaptureStdout();
    {
        const DNSMessages outer([&said](const std::string& message) { said.push_back("outer " + message); });
        std::size_t position = 0;
        skip_question(&position, bytes(name("a.") + "12"));
        const DNSMessages inner([&said](const std::string& message) { said.push_back(message); });
        position = 9;
        skip_question(&position, bytes(name("a.")));
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(said, (std::vector<std::string>{"outer decode error, packet too short for type and class",
                        "decode error, ran off the buffer"}));
}

TEST(DNSMessage, decodesServiceRecords) {
    const std::string owner = name("x.");
    const std::string good = record(owner, kDNSTypeSRV, srv(name("host.local.")));
    const std::string other = record(owner, 12, name("a."));
    const Reading cases[] = {
        {"a service", good + "x", 0, 0, "host.local.:631", "", good.size()},
        {"its target in the owner", record(owner, kDNSTypeSRV, srv(pointer(0))), 0, 0, "x.:631", "", 21},
        {"another type", other, 0, 0, "before:1", "", other.size()},
        {"at the end", good, good.size(), kSRVOutside, "before:1", kRanOff, good.size()},
        {"a bad owner", pointer(0), 0, kSRVNameInvalid, "before:1", kLoop, 2},
        {"12 bytes after the owner", other.substr(0, 15), 0, kSRVTooShort, "before:1", kNoRecord, 3},
        {"cut data", good.substr(0, good.size() - 1), 0, kSRVDataInvalid, "before:1", kNoData, 13},
        {"65535 bytes", record(owner, kDNSTypeSRV, srv(name("a.")), 65535), 0, kSRVDataInvalid, "before:1",
            kNoData, 13},
        {"five bytes", record(owner, kDNSTypeSRV, "12345") + good, 0, kSRVDataInvalid, "before:1", kNoData,
            13},
        {"no target", record(owner, kDNSTypeSRV, srv("")), 0, kSRVNameInvalid, ":631", kPastEnd, 13},
    };
    for (const Reading& expected : cases) {
        SCOPED_TRACE(expected.what);
        std::string target = "before";
        std::uint16_t port = htons(1);
        expectReading(expected,
            [&](std::size_t* at, DNSBytes message) { return decode_srv(at, message, &target, &port); });
        EXPECT_EQ(target + ':' + std::to_string(ntohs(port)), expected.result);
    }
}

TEST(DNSMessage, decodesTextRecords) {
    const std::string owner = name("x.");
    const std::string good = record(owner, kDNSTypeTXT, label("a=1") + label(""));
    const std::string other = record(owner, 12, name("a."));
    const Reading cases[] = {
        {"strings", good + "x", 0, 0, "\3a=1\0"s, "", good.size()},
        {"nothing in nothing", record(owner, kDNSTypeTXT, "") + "xyz", 0, 0, "", "", 13},
        {"too little room", good, 0, kTXTCapacityTooSmall, "????", "", 13},
        {"another type", other, 0, 0, "??", "", other.size()},
        {"a service of five bytes", record(owner, kDNSTypeSRV, "12345"), 0, 0, "??", "", 18},
        {"a bad owner", pointer(9), 0, kTXTNameInvalid, "?????", kInvalid, 2},
        {"cut data", good.substr(0, 16), 0, kTXTDataInvalid, "?????", kNoData, 13},
    };
    for (const Reading& expected : cases) {
        SCOPED_TRACE(expected.what);
        // As much room as the result takes.
        auto capacity = static_cast<std::uint32_t>(expected.result.size());
        std::vector<std::uint8_t> room(std::max(1U, capacity), '?');
        expectReading(expected, [&](std::size_t* at, DNSBytes message) {
            return decode_txt(at, message, room.data(), &capacity);
        });
        EXPECT_EQ(std::string(room.begin(), room.begin() + capacity), expected.result);
    }
    std::uint8_t byte = 0;
    std::uint32_t capacity = 1;
    std::size_t position = 0;
    EXPECT_EQ(decode_txt(&position, bytes(good), nullptr, &capacity), kTXTNoDestination);
    EXPECT_EQ(decode_txt(&position, bytes(good), &byte, nullptr), kTXTNoCapacity);
}

TEST(DNSMessage, skipsQuestions) {
    const std::string good = question(name("a."));
    const Reading cases[] = {
        {"a question", good, 0, 0, "", "", 7},
        {"at the end", good, 7, kQuestionOutside, "", kRanOff, 7},
        {"a bad name", label("a"), 0, kQuestionNameInvalid, "", kPastEnd, 0},
        {"cut", good.substr(0, 6), 0, kQuestionTooShort, "",
            "decode error, packet too short for type and class", 3},
    };
    for (const Reading& expected : cases) {
        SCOPED_TRACE(expected.what);
        expectReading(expected, skip_question);
    }
}

TEST(DNSMessage, takesTheHostFromTheFirstAnswerAlone) {
    const std::string service = record(name("x."), kDNSTypeSRV, srv(name("host.local.")));
    const std::string other = record(name("x."), 12, name("a."));
    const std::string asked = question(name("x._ipp._tcp.local."));
    const std::tuple<const char*, std::string, std::optional<std::string>> cases[] = {
        {"a question", header(1, 1) + asked + service, "host.local."},
        {"two questions, two answers", header(2, 2) + asked + asked + service + other, "host.local."},
        {"another answer first", header(1, 2) + asked + other + service, std::nullopt},
        {"no answer", header(1, 0) + asked + service, std::nullopt},
        {"fewer questions than counted", header(65535, 65535) + asked + service, std::nullopt},
        {"counts alone", header(65535, 65535), std::nullopt},
        {"half a header", header(0, 1).substr(0, 7), std::nullopt},
        {"nothing", "", std::nullopt},
        {"no ASCII", header(0, 1) + record(name("x."), kDNSTypeSRV, srv(name("B\xFCro."))), std::nullopt},
        {"an owner in the header", header(0, 1) + record(pointer(0), kDNSTypeSRV, srv(name("a."))), "a."},
    };
    for (const auto& [what, message, host] : cases)
        EXPECT_EQ(serviceHostInAnswer(exactly(message)), host) << what;
}

} // namespace
} // namespace orvan
