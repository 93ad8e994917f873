#include "Common/DNSMessage.h"
#include "Common/Utilities/PrinterURL.h"
#include "Tests/Support/DNSParts.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
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
    int code = 0;
    std::string output;
    std::size_t position = 0;
};

// Hands over a copy of exactly the message's size, so that a read past its end is seen.
Reading read(const std::string& message, std::size_t position,
    const std::function<int(std::size_t*, DNSBytes)>& reader) {
    const std::vector<std::uint8_t> exact(message.begin(), message.end());
    testing::internal::CaptureStdout();
    const int code = reader(&position, exact);
    return {code, testing::internal::GetCapturedStdout(), position};
}

std::string repeated(std::size_t count, const std::string& text) {
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

TEST(DNSMessage, decodesNames) {
    const std::string longest = repeated(63, label("abc")) + label("d") + '\0'; // 255 bytes
    const struct {
        const char* what;
        std::string message;
        std::size_t start;
        int code;
        std::string text;
        const char* output;
        std::size_t position;
    } cases[] = {
        {"labels", name("printer.local.") + "x", 0, 0, "printer.local.", "", 15},
        {"the root", "\0"s, 0, 0, "", "", 1},
        {"bytes as they are", label("a.\\ \xC3\0"s) + '\0', 0, 0, "a.\\ \xC3\0."s, "", 8},
        {"63 bytes", label(std::string(63, 'x')) + '\0', 0, 0, std::string(63, 'x') + ".", "", 65},
        {"labels and a pointer", name("local.") + label("a") + pointer(0) + "x", 7, 0, "a.local.", "", 11},
        {"a pointer", name("local.") + pointer(0) + "x", 7, 0, "local.", "", 9},
        {"pointers in a row", name("a.") + pointer(0) + pointer(3) + pointer(5), 7, 0, "a.", "", 9},
        {"255 bytes", longest, 0, 0, repeated(63, "abc.") + "d.", "", 255},
        {"to itself", pointer(0), 0, kNameLoop, "", kLoop, 2},
        {"to itself, further on", "xx" + pointer(2), 2, kNameLoop, "", kLoop, 4},
        {"to its own labels", label("a") + pointer(0), 0, kNameLoop, "a.", kLoop, 4},
        {"in a circle of two", label("a") + pointer(4) + label("b") + pointer(0), 4, kNameLoop, "b.a.", kLoop,
            8},
        {"up and down below it", pointer(2) + pointer(0) + pointer(2), 4, kNameLoop, "", kLoop, 6},
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
        {"length 191", label(std::string(191, 'x')) + '\0', 0, kNameLabelInvalid, "",
            "\ndecode error, label longer than 63 bytes\n", 0},
        {"256 bytes", label("de") + longest.substr(0, 252) + '\0', 0, kNameTooLong,
            "de." + repeated(62, "abc."), "\ndecode error, name longer than 255 bytes\n", 0},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.what);
        std::string text = "before";
        const Reading reading = read(expected.message, expected.start,
            [&](std::size_t* position, DNSBytes message) { return decode_name(position, message, &text); });
        EXPECT_EQ(reading.code, expected.code);
        EXPECT_EQ(reading.output, expected.output);
        EXPECT_EQ(reading.position, expected.position);
        EXPECT_EQ(text, expected.text);
    }
}

TEST(DNSMessage, decodesServiceRecords) {
    const std::string owner = name("x.");
    const std::string good = record(owner, kDNSTypeSRV, srv(name("host.local.")));
    const std::string other = record(owner, 12, name("a."));
    const struct {
        const char* what;
        std::string message;
        std::size_t start;
        int code;
        int port;
        const char* target;
        const char* output;
        std::size_t position;
    } cases[] = {
        {"a service", good + "x", 0, 0, 631, "host.local.", "", good.size()},
        {"its target in the owner", record(owner, kDNSTypeSRV, srv(pointer(0))), 0, 0, 631, "x.", "", 21},
        {"another type", other, 0, 0, 1, "before", "", other.size()},
        {"at the end", good, good.size(), kSRVOutside, 1, "before", kRanOff, good.size()},
        {"no message", "", 0, kSRVOutside, 1, "before", kRanOff, 0},
        {"a bad owner", pointer(0), 0, kSRVNameInvalid, 1, "before", kLoop, 2},
        {"12 bytes after the owner", other.substr(0, 15), 0, kSRVTooShort, 1, "before", kNoRecord, 3},
        {"cut data", good.substr(0, good.size() - 1), 0, kSRVDataInvalid, 1, "before", kNoData, 13},
        {"65535 bytes", record(owner, kDNSTypeSRV, srv(name("a.")), 65535), 0, kSRVDataInvalid, 1, "before",
            kNoData, 13},
        {"five bytes", record(owner, kDNSTypeSRV, "12345") + good, 0, kSRVDataInvalid, 1, "before", kNoData,
            13},
        {"no target", record(owner, kDNSTypeSRV, srv("")), 0, kSRVNameInvalid, 631, "", kPastEnd, 13},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.what);
        std::string target = "before";
        std::uint16_t port = htons(1);
        const Reading reading = read(expected.message, expected.start,
            [&](std::size_t* at, DNSBytes message) { return decode_srv(at, message, &target, &port); });
        EXPECT_EQ(reading.code, expected.code);
        EXPECT_EQ(reading.output, expected.output);
        EXPECT_EQ(reading.position, expected.position);
        EXPECT_EQ(target, expected.target);
        EXPECT_EQ(ntohs(port), expected.port);
    }
}

TEST(DNSMessage, decodesTextRecords) {
    const std::string owner = name("x.");
    const std::string good = record(owner, kDNSTypeTXT, label("a=1") + label(""));
    const std::string other = record(owner, 12, name("a."));
    const struct {
        const char* what;
        std::string message;
        std::size_t start;
        std::uint32_t capacity;
        int code;
        std::string stored;
        const char* output;
        std::size_t position;
    } cases[] = {
        {"strings", good + "x", 0, 5, 0, "\3a=1\0"s, "", good.size()},
        {"nothing in nothing", record(owner, kDNSTypeTXT, "") + "xyz", 0, 0, 0, "", "", 13},
        {"too little room", good, 0, 4, kTXTCapacityTooSmall, "????", "", 13},
        {"another type", other, 0, 2, 0, "??", "", other.size()},
        {"outside", good, 99, 5, kTXTOutside, "?????", kRanOff, 99},
        {"a bad owner", pointer(9), 0, 5, kTXTNameInvalid, "?????", kInvalid, 2},
        {"12 bytes after the owner", good.substr(0, 15), 0, 5, kTXTTooShort, "?????", kNoRecord, 3},
        {"cut data", good.substr(0, 16), 0, 5, kTXTDataInvalid, "?????", kNoData, 13},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.what);
        std::vector<std::uint8_t> room(std::max(1U, expected.capacity), '?');
        std::uint32_t capacity = expected.capacity;
        const Reading reading =
            read(expected.message, expected.start, [&](std::size_t* at, DNSBytes message) {
                return decode_txt(at, message, room.data(), &capacity);
            });
        EXPECT_EQ(reading.code, expected.code);
        EXPECT_EQ(reading.output, expected.output);
        EXPECT_EQ(reading.position, expected.position);
        EXPECT_EQ(std::string(room.begin(), room.begin() + capacity), expected.stored);
    }
    std::uint8_t byte = 0;
    std::uint32_t capacity = 1;
    std::size_t position = 0;
    EXPECT_EQ(decode_txt(&position, bytes(good), nullptr, &capacity), kTXTNoDestination);
    EXPECT_EQ(decode_txt(&position, bytes(good), &byte, nullptr), kTXTNoCapacity);
}

TEST(DNSMessage, skipsQuestions) {
    const std::string good = question(name("a."));
    const struct {
        std::string message;
        std::size_t start;
        int code;
        const char* output;
        std::size_t position;
    } cases[] = {
        {good, 0, 0, "", 7},
        {good, 7, kQuestionOutside, kRanOff, 7},
        {label("a"), 0, kQuestionNameInvalid, kPastEnd, 0},
        {good.substr(0, 6), 0, kQuestionTooShort, "decode error, packet too short for type and class", 3},
    };
    for (const auto& expected : cases) {
        const Reading reading = read(expected.message, expected.start, skip_question);
        EXPECT_EQ(reading.code, expected.code);
        EXPECT_EQ(reading.output, expected.output);
        EXPECT_EQ(reading.position, expected.position);
    }
}

TEST(DNSMessage, takesTheHostFromTheFirstAnswerAlone) {
    const std::string service = record(name("x."), kDNSTypeSRV, srv(name("host.local.")));
    const std::string other = record(name("x."), 12, name("a."));
    const std::string asked = question(name("x._ipp._tcp.local."));
    const struct {
        const char* what;
        std::string message;
        std::optional<std::string> host;
    } cases[] = {
        {"no question", header(0, 1) + service, "host.local."},
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
    for (const auto& expected : cases) {
        std::optional<std::string> host;
        read(expected.message, 0, [&](std::size_t*, DNSBytes message) {
            host = serviceHostInAnswer(message);
            return 0;
        });
        EXPECT_EQ(host, expected.host) << expected.what;
    }
}

} // namespace
} // namespace orvan
