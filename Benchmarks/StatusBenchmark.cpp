// The printer's status document and the keyword maps, beside what stands below them or does the same.
#include "Benchmarks/Paired.h"
#include "CommandFilter/OVCPSSParser.h"
#include "CommandFilter/OVOVGParser.h"

#include <benchmark/benchmark.h>

#include <expat.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace orvan {
namespace {

constexpr std::size_t kDocumentSize = platform::XMLDocument::kMaximumSize;

// A list of the status, from its first record to behind the closing tag of its last.
struct Records {
    std::string_view first;
    std::string_view end;
};
constexpr std::array<Records, 5> kRepeated{{
    {"<tray>", "</inputTrays>"},
    {"<supply>", "</supplies>"},
    {"<customPaperType>", "</printer>"},
    {"<job>", "</personalJobs>"},
    {"<INSTANCE>", "</COLORMODE>"},
}};

std::string readSample() {
    std::ifstream file(ORVAN_SOURCE_DIR "/TestBed/Simulator/status.xml");
    return {std::istreambuf_iterator<char>(file), {}};
}

// The simulator's status, indentation and all, with as many records as a document may have.
const std::string& largeStatusDocument() {
    static const std::string document = [] {
        std::string text = readSample();
        std::array<std::string, kRepeated.size()> records;
        std::size_t size = 0;
        for (std::size_t i = 0; i < records.size(); ++i) {
            const std::size_t first = text.find(kRepeated[i].first);
            const std::size_t start = text.rfind('\n', first);
            const std::size_t end = text.find(kRepeated[i].end, first);
            records[i] = text.substr(start, text.rfind('\n', end) - start);
            size += records[i].size();
        }
        const std::size_t copies = (kDocumentSize - text.size()) / std::max(size, std::size_t{1});
        for (std::size_t i = 0; i < records.size(); ++i) {
            const std::size_t start = text.find(records[i]);
            for (std::size_t copy = 0; copy < copies; ++copy)
                text.insert(start, records[i]);
        }
        return text;
    }();
    return document;
}

bool readTicket() {
    Ticket ticket;
    const auto parser = OVOVGParser::initWithData(largeStatusDocument());
    if (parser != nullptr) parser->writeToTicket(ticket);
    return ticket.size() == 6;
}

bool readByExpat() {
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    const std::string& text = largeStatusDocument();
    return XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
}

bool readByLibxml() {
    const std::string& text = largeStatusDocument();
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NONET),
        xmlFreeDoc);
    return document != nullptr && xmlDocGetRootElement(document.get()) != nullptr;
}

void readStatus(benchmark::State& state, bool (*peer)()) {
    measurePaired(state, readTicket, peer);
}
BENCHMARK_CAPTURE(readStatus, expat, readByExpat)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readStatus, libxml, readByLibxml)->Unit(benchmark::kMillisecond);

// Each keyword of the largest map, many times over.
enum class Direction { forward, back };

void lookUp(benchmark::State& state, Direction direction) {
    constexpr int kRounds = 200;
    const OVBidirectionalDictionary& map = OVCPSSParser::typeMap();
    std::vector<std::string> words;
    std::unordered_map<std::string, std::string> peer;
    auto keys = map.keyEnumerator();
    while (const auto key = keys.next()) {
        const std::string& object = *map.objectForKey(key);
        words.push_back(direction == Direction::forward ? std::string(*key) : object);
        peer.emplace(words.back(), direction == Direction::forward ? object : std::string(*key));
    }
    const auto sum = [&](const auto& look) {
        std::size_t size = 0;
        for (int i = 0; i < kRounds; ++i)
            for (const std::string& word : words)
                size += look(word);
        return size;
    };
    const std::size_t expected = sum([&](const std::string& word) { return peer.find(word)->second.size(); });
    measurePaired(
        state,
        [&] {
            return expected == sum([&](const std::string& word) {
                return (direction == Direction::forward ? map.objectForKey(word) : map.keyForObject(word))
                    ->size();
            });
        },
        [&] {
            return expected == sum([&](const std::string& word) { return peer.find(word)->second.size(); });
        });
}
BENCHMARK_CAPTURE(lookUp, forward, Direction::forward)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(lookUp, back, Direction::back)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace orvan
