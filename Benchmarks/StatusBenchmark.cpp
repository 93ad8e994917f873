// The printer's status document and the keyword maps, beside what stands below them or does the same.
#include "Benchmarks/Paired.h"
#include "CommandFilter/OVCPSSParser.h"
#include "CommandFilter/OVOVGParser.h"

#include <benchmark/benchmark.h>

#include <expat.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace orvan {
namespace {

constexpr std::size_t kDocumentSize = platform::XMLDocument::kMaximumSize;

std::string section(const std::string& opening, const std::string& entry, const std::string& closing) {
    std::string text = opening;
    while (text.size() + entry.size() + closing.size() < kDocumentSize / 5)
        text += entry;
    return text + closing;
}

// All sections of a status, each a fifth of the document.
const std::string& statusDocument() {
    static const std::string document =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<status>\n" +
        section("<deviceStatus><printer><inputTrays>\n",
            "  <tray>\n    <name>Tray 2</name>\n    <status>NearEmpty</status>\n"
            "    <paperSize>Postcard (148 x 200 mm)</paperSize>\n"
            "    <paperType>Thick Glossy Paper</paperType>\n  </tray>\n",
            "</inputTrays>") +
        section("<supplies>\n",
            "  <supply>\n    <name>Magenta Toner</name>\n    <status>35</status>\n  </supply>\n",
            "</supplies></printer></deviceStatus>\n") +
        section("<customPaperTypes><printer>\n",
            "  <customPaperType>\n    <name>Certificates (ivory, 160 g)</name>\n    <type>17</type>\n"
            "    <baseClass>Cardstock</baseClass>\n  </customPaperType>\n",
            "</printer></customPaperTypes>\n") +
        section("<storedJobs><printer><personalJobs>\n",
            "  <job>\n    <name>Menu of the week</name>\n    <id>4711</id>\n  </job>\n",
            "</personalJobs></printer></storedJobs>\n") +
        section("<MULTIRSP ColorModeCount=\"1\"><first/><mode>\n",
            "  <INSTANCE>\n    <PROPERTY NAME=\"Name\">Vivid</PROPERTY>\n"
            "    <PROPERTY NAME=\"Id\">12</PROPERTY>\n  </INSTANCE>\n",
            "</mode></MULTIRSP>\n") +
        "</status>\n";
    return document;
}

bool readTicket() {
    Ticket ticket;
    const auto parser = OVOVGParser::initWithData(statusDocument());
    if (parser != nullptr) parser->writeToTicket(ticket);
    return ticket.size() == 5;
}

bool readByExpat() {
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    const std::string& text = statusDocument();
    return XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
}

bool readByLibxml() {
    const std::string& text = statusDocument();
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
