#include "BiDi/ppdx.h"

#include "BiDi/ResponseEntries.h"
#include "Tests/Support/TempFolder.h"

#include <cups/http.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace orvan {
namespace {

// More pieces than there are four-digit numbers.
constexpr std::size_t kPieces = 0x10001;

std::string noise(std::size_t size) {
    std::mt19937 generator(4500);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

std::string contentOf(int descriptor) {
    const off_t size = ::lseek(descriptor, 0, SEEK_END);
    std::string text(static_cast<std::size_t>(size), '\0');
    EXPECT_EQ(::pread(descriptor, text.data(), text.size(), 0), size);
    return text;
}

std::string written(const char* name, const std::string& block) {
    const int file = ::memfd_create("lines", MFD_CLOEXEC);
    EXPECT_TRUE(ppdxWriteDataToDescriptor(file, name, block.data(), block.size()));
    std::string lines = contentOf(file);
    ::close(file);
    return lines;
}

// The bytes, and behind them the messages on standard error.
struct Reading {
    std::optional<std::string> bytes;
    std::string messages;
};

Reading readBack(EntryDictionary entries, const char* name = "N") {
    testing::internal::CaptureStderr();
    std::size_t size = 77;
    const PpdxData data = ppdxReadData(&entries, name, ppdx_get_chunk_nsdictionary, &size);
    Reading reading;
    if (data != nullptr) {
        reading.bytes.emplace(data.get(), size);
        EXPECT_EQ(data.get()[size], '\0');
    } else {
        EXPECT_EQ(size, 0U);
    }
    reading.messages = testing::internal::GetCapturedStderr();
    return reading;
}

std::size_t lineCount(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

// The entries N0000... of any bytes, in pieces of the format's or another size, without a terminator.
EntryDictionary entriesOf(const std::string& stream, std::size_t pieceSize = 158) {
    EntryDictionary entries;
    for (std::size_t start = 0; start < stream.size(); start += pieceSize) {
        std::array<char, 4096> value{};
        const std::string piece = stream.substr(start, pieceSize);
        httpEncode64_2(value.data(), value.size(), piece.data(), static_cast<int>(piece.size()));
        std::array<char, 16> keyword{};
        std::snprintf(keyword.data(), keyword.size(), "N%04zx", entries.size());
        entries.set(keyword.data(), value.data());
    }
    return entries;
}

std::string compressed(const std::string& block) {
    std::string stream(compressBound(block.size()), '\0');
    uLongf size = stream.size();
    EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(stream.data()), &size,
                  reinterpret_cast<const Bytef*>(block.data()), block.size(), Z_BEST_COMPRESSION),
        Z_OK);
    stream.resize(size);
    return stream;
}

TEST(Ppdx, BlocksOfEverySizeComeBack) {
    const std::string most = noise(kPpdxMaximumSize);
    for (const std::size_t size :
        {0UL, 1UL, 157UL, 158UL, 305UL, 2048UL, 65536UL, 1000000UL, kPpdxMaximumSize - 1, kPpdxMaximumSize}) {
        for (const bool isNoise : {true, false}) {
            SCOPED_TRACE(std::to_string(size) + (isNoise ? " of noise" : " of zeros"));
            const std::string block = isNoise ? most.substr(0, size) : std::string(size, '\0');
            const std::string lines = written("N", block);
            std::istringstream stream(lines);
            for (std::string line; std::getline(stream, line);) {
                ASSERT_TRUE(line.starts_with("PPD: N"));
                ASSERT_LT(line.size(), 2046U);
            }
            EXPECT_TRUE(lines.ends_with("=\"\"\n"));
            const Reading reading = readBack(entriesInTaskOutput(lines));
            EXPECT_TRUE(reading.bytes == block);
            EXPECT_TRUE(reading.messages.empty() || size == kPpdxMaximumSize) << reading.messages;
        }
    }
}

TEST(Ppdx, WritesTheFormat) {
    EXPECT_EQ(written("N", ""), "PPD: N0000=\"\"\n");
    const std::string longest(kPpdxMaximumNameLength, 'n');
    EXPECT_EQ(written(longest.c_str(), ""), "PPD: " + longest + "0000=\"\"\n");

    const EntryDictionary entries = entriesInTaskOutput(written("N", noise(3160)));
    EXPECT_EQ(entries.find("N0000")->value.size(), 211U);
    EXPECT_EQ(entries.find("N0000")->value.find('='), std::string::npos);
    EXPECT_TRUE(entries.find("N000a") != nullptr && entries.find("N0010") != nullptr);
    EXPECT_EQ(entries.find("N000A"), nullptr);
    EXPECT_NE(entriesInTaskOutput(written("N", noise(kPieces * 158))).find("N10000"), nullptr);

    // Stored by deflate, 305 bytes are exactly two pieces.
    ASSERT_EQ(compressed(noise(305)).size(), 316U);
    const EntryDictionary full = entriesInTaskOutput(written("N", noise(305)));
    EXPECT_EQ(full.size(), 4U);
    EXPECT_EQ(full.find("N0002")->value, "");
    EXPECT_EQ(full.find("N0003")->value, "\"\"");

    // The padding of a piece of 157 bytes is one character short.
    const std::string value(entriesInTaskOutput(written("N", noise(146))).find("N0000")->value);
    EXPECT_EQ(value.size(), 211U);
    EXPECT_EQ(value.find('='), 210U);
}

TEST(Ppdx, RefusesWhatItCannotWrite) {
    const std::string tooLarge(kPpdxMaximumSize + 1, 'x');
    EXPECT_EQ(written("N", tooLarge), "");
    EXPECT_EQ(written(nullptr, "x"), "");
    EXPECT_EQ(written(std::string(kPpdxMaximumNameLength + 1, 'n').c_str(), "x"), "");
    // Five digits do not fit behind the longest name; one character less leaves room.
    const std::string manyPieces = noise(kPieces * 158);
    EXPECT_EQ(written(std::string(kPpdxMaximumNameLength, 'n').c_str(), manyPieces), "");
    EXPECT_NE(written(std::string(kPpdxMaximumNameLength - 1, 'n').c_str(), manyPieces), "");
    testing::internal::CaptureStderr();
    ppdxWriteData("N", nullptr, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(ppdxWriteDataToDescriptor(-1, "N", "x", 1));
    EXPECT_EQ(errno, EBADF);
}

TEST(Ppdx, WritesToStandardError) {
    testing::internal::CaptureStderr();
    ppdxWriteData("N", "block", 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), written("N", "block"));
}

TEST(Ppdx, ReadsWhatIsThere) {
    const std::string block = noise(1000);
    const std::string stream = compressed(block);
    const EntryDictionary whole = entriesOf(stream);
    const std::size_t last = whole.size() - 1;
    const auto keyword = [](std::size_t number) { return "N000" + std::to_string(number); };
    const auto with = [&whole](const std::string& key, const std::string& value) {
        EntryDictionary changed = whole;
        changed.set(key, value);
        return changed;
    };
    std::string badSum = stream;
    badSum.back() = static_cast<char>(badSum.back() ^ 1);
    EntryDictionary gap;
    for (const auto& [name, value] : whole)
        if (name != "N0003") gap.set(name, value);
    std::string spaced;
    for (const char letter : whole.find("N0000")->value)
        spaced += std::string("!\" \x80") + letter;
    // A preset dictionary is asked for by a bit of the header, RFC 1950 section 2.2.
    const std::string dictionary("\x78\xF9\x00\x00\x00\x00more", 10);

    struct Case {
        const char* what;
        EntryDictionary entries;
        std::optional<std::size_t> size; // of the block's beginning; nothing: there is no answer
        std::size_t messages;
    };
    const std::vector<Case> cases = {
        {"no terminator", whole, 1000, 0},
        {"nothing", {}, std::nullopt, 0},
        {"no first chunk", {{"N0001", whole.find("N0001")->value}}, std::nullopt, 0},
        {"terminator alone", {{"N0000", "\"\""}}, 0, 0},
        {"empty value first", {{"N0000", ""}}, 0, 0},
        {"padding alone", {{"N0000", "=="}}, 0, 0},
        {"characters outside the alphabet", with("N0000", spaced), 1000, 0},
        {"stale chunks behind the terminator", with(keyword(last + 2), "AAAA"), 1000, 0},
        {"bytes behind the end in the last piece", entriesOf(stream + "more"), 1000, 0},
        {"chunks behind the end", with(keyword(last + 1), "AAAA"), 1000, 0},
        {"preset dictionary", entriesOf(dictionary), 0, 0},
        {"damage in the first piece", with("N0000", "AAAA"), 0, last + 1},
        {"bad check sum", entriesOf(badSum), 1000, 1},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const Reading reading = readBack(test.entries);
        EXPECT_EQ(lineCount(reading.messages), test.messages) << reading.messages;
        ASSERT_EQ(reading.bytes.has_value(), test.size.has_value());
        if (!test.size) continue;
        EXPECT_EQ(*reading.bytes, block.substr(0, *test.size));
    }

    // Of a piece that is too long the first 158 bytes count, of which seven are headers.
    EXPECT_EQ(readBack(entriesOf(stream, 200)).bytes->substr(0, 151), block.substr(0, 151));
    const Reading cut = readBack(gap);
    EXPECT_EQ(cut.messages, "");
    EXPECT_TRUE(!cut.bytes->empty() && block.starts_with(*cut.bytes));
    EXPECT_EQ(readBack(entriesOf(badSum)).messages, "ERROR: inflate returned -3 (incorrect data check)\n");

    EntryDictionary entries = whole;
    EXPECT_EQ(ppdxReadData(nullptr, "N", ppdx_get_chunk_nsdictionary, nullptr), nullptr);
    EXPECT_EQ(ppdxReadData(&entries, nullptr, ppdx_get_chunk_nsdictionary, nullptr), nullptr);
    EXPECT_EQ(ppdxReadData(&entries, "N", nullptr, nullptr), nullptr);
    EXPECT_NE(ppdxReadData(&entries, "N", ppdx_get_chunk_nsdictionary, nullptr), nullptr);
}

TEST(Ppdx, KeywordsThatDoNotFitEndTheSequence) {
    // Whatever is asked for with a name of 40 characters and more, it is the same keyword.
    for (const std::size_t length : {37UL, 40UL, 300UL}) {
        const std::string name(length, 'n');
        const std::string keyword = (name + "0000").substr(0, kPpdxMaximumKeywordLength);
        const Reading reading =
            readBack({{keyword, entriesOf(compressed(noise(1000))).find("N0000")->value}}, name.c_str());
        EXPECT_TRUE(reading.bytes && noise(1000).starts_with(*reading.bytes));
        EXPECT_EQ(reading.messages, "");
    }
}

TEST(Ppdx, ABombStopsAtTheLimit) {
    const Reading reading = readBack(entriesOf(compressed(std::string(kPpdxMaximumSize + 1000000, 'x'))));
    ASSERT_TRUE(reading.bytes);
    EXPECT_TRUE(*reading.bytes == std::string(kPpdxMaximumSize, 'x'));
    EXPECT_NE(reading.messages.find("ERROR: inflate returned -5 ((null))\n"), std::string::npos);
}

// A source that cuts its stream into pieces of a single byte.
struct Crumbs {
    std::string stream;
    std::string value;

    static const char* get(void* source, const char* keyword) {
        auto& crumbs = *static_cast<Crumbs*>(source);
        const std::size_t number = std::strtoul(keyword + 1, nullptr, 16);
        if (number >= crumbs.stream.size()) return nullptr;
        std::array<char, 8> value{};
        crumbs.value = httpEncode64_2(value.data(), value.size(), crumbs.stream.data() + number, 1);
        return crumbs.value.c_str();
    }
};

TEST(Ppdx, TellsHowTheReadingEnded) {
    const struct {
        const char* lines;
        PpdxEnding ending;
        std::uint32_t number;
    } cases[] = {
        {"PPD: M0000=\"\"", PpdxEnding::noEntry, 0},
        {"PPD: N0000=\"\"", PpdxEnding::whole, 0},
        {"PPD: N0000=eJw=", PpdxEnding::missing, 1},
        {"PPD: N0000=eJw= N0001=\"\"", PpdxEnding::cutShort, 1},
        {"PPD: N0000=eJw= N0001=//// N0002=AAAA", PpdxEnding::damaged, 1},
        {"PPD: N0000=eLsAAAAB", PpdxEnding::damaged, 0}, // asks for a dictionary
        {"PPD: N0000=eJwDAAAAAAE= N0002=x", PpdxEnding::whole, 0},
    };
    const PpdxMessages quiet([](const std::string&) {});
    for (const auto& [lines, ending, number] : cases) {
        EntryDictionary entries = entriesInTaskOutput(lines);
        const PpdxReading reading = ppdxRead(&entries, "N", ppdx_get_chunk_nsdictionary);
        EXPECT_EQ(reading.ending, ending) << lines;
        EXPECT_EQ(reading.number, number) << lines;
        EXPECT_EQ(reading.bytes == nullptr, ending == PpdxEnding::noEntry) << lines;
    }
    for (const std::size_t size : {std::size_t{300}, kPpdxMaximumSize, kPpdxMaximumSize + 1}) {
        EntryDictionary entries = entriesOf(compressed(std::string(size, 'x')));
        const PpdxReading reading = ppdxRead(&entries, "N", ppdx_get_chunk_nsdictionary);
        EXPECT_EQ(reading.ending, size > kPpdxMaximumSize ? PpdxEnding::tooLarge : PpdxEnding::whole) << size;
        EXPECT_EQ(reading.size, std::min(size, kPpdxMaximumSize));
    }
}

TEST(Ppdx, ReadsAMillionChunks) {
    const std::string block = noise(1000000);
    Crumbs crumbs{compressed(block), {}};
    std::size_t size = 0;
    const PpdxData data = ppdxReadData(&crumbs, "N", Crumbs::get, &size);
    EXPECT_TRUE(std::string(data.get(), size) == block);
}

TEST(Ppdx, AgreesWithAnotherImplementation) {
    if (std::system("python3 -c 'import zlib' 2>/dev/null") != 0) GTEST_SKIP() << "there is no Python";
    const TempFolder folder;
    const auto python = [&folder](const std::string& verb, const std::string& input) {
        const std::string in = folder.write("in", input);
        const std::string out = folder.path() / "out";
        EXPECT_EQ(
            std::system(("python3 " ORVAN_PPDX_REFERENCE " " + verb + " Name <" + in + " >" + out).c_str()),
            0);
        return contents(out);
    };
    std::string text;
    for (int number = 0; number < 3000; ++number)
        text += "<string>Vellum " + std::to_string(number * number) + "</string>\n";
    for (const std::string& block : {std::string(), noise(305), noise(70000), text}) {
        const std::string lines = written("Name", block);
        EXPECT_TRUE(python("decode", lines) == block);
        EXPECT_TRUE(readBack(entriesInTaskOutput(python("encode", block)), "Name").bytes == block);
        EXPECT_EQ(python("encode", block), lines);
    }
}

} // namespace
} // namespace orvan
