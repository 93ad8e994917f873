// The readers of XML documents and property lists, beside libraries that read the same.
#include "Platform/PropertyList.h"
#include "Platform/XMLDocument.h"

#include <benchmark/benchmark.h>

#include <expat.h>
#include <plist/plist.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace orvan {
namespace {

constexpr int kEntries = 500;

// As a printer's status: elements with attributes and a little text.
const std::string& statusDocument() {
    static const std::string document = [] {
        std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<status>\n";
        for (int i = 0; i < kEntries; ++i)
            text += "  <tray id=\"" + std::to_string(i) +
                    "\" state=\"ready\">\n    <media>Heavyweight &amp; glossy</media>\n    <level>" +
                    std::to_string(i % 101) + "</level>\n  </tray>\n";
        return text + "</status>\n";
    }();
    return document;
}

void readXML(benchmark::State& state) {
    while (state.KeepRunning()) {
        const auto document = platform::XMLDocument::parse(statusDocument());
        if (document == nullptr) state.SkipWithError("the document was refused");
        benchmark::DoNotOptimize(document);
    }
}
BENCHMARK(readXML);

// The same characters through the same library, and nothing is kept.
void readXMLFloor(benchmark::State& state) {
    const std::string& text = statusDocument();
    std::size_t seen = 0;
    while (state.KeepRunning()) {
        const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
            XML_ParserCreate(nullptr), XML_ParserFree);
        XML_SetUserData(parser.get(), &seen);
        XML_SetElementHandler(
            parser.get(), [](void* count, const char*, const char**) { ++*static_cast<std::size_t*>(count); },
            [](void*, const char*) {});
        XML_SetCharacterDataHandler(parser.get(), [](void* count, const char*, int length) {
            *static_cast<std::size_t*>(count) += static_cast<std::size_t>(length);
        });
        if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK)
            state.SkipWithError("the document was refused");
    }
    benchmark::DoNotOptimize(seen);
}
BENCHMARK(readXMLFloor);

// As a domain of user defaults: a dictionary of dictionaries of short values.
const std::string& xmlList() {
    static const std::string list = [] {
        std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
        for (int i = 0; i < kEntries; ++i)
            text += "<key>queue" + std::to_string(i) + "</key><dict><key>paper</key><string>Heavyweight " +
                    std::to_string(i) + "</string><key>pages</key><integer>" + std::to_string(i * 1000) +
                    "</integer><key>color</key><true/></dict>\n";
        return text + "</dict>\n</plist>\n";
    }();
    return list;
}

const std::string& binaryList() {
    static const std::string list =
        platform::PropertyList::read(xmlList()).value_or(platform::PropertyList()).writeBinary();
    return list;
}

void readList(benchmark::State& state, const std::string& (*bytes)()) {
    while (state.KeepRunning()) {
        const auto list = platform::PropertyList::read(bytes());
        if (!list || list->find("queue7") == nullptr) state.SkipWithError("the list was refused");
        benchmark::DoNotOptimize(list);
    }
}
BENCHMARK_CAPTURE(readList, xml, xmlList);
BENCHMARK_CAPTURE(readList, binary, binaryList);

void readListPeer(benchmark::State& state, const std::string& (*bytes)()) {
    while (state.KeepRunning()) {
        plist_t list = nullptr;
        plist_from_memory(bytes().data(), static_cast<std::uint32_t>(bytes().size()), &list);
        if (list == nullptr || plist_dict_get_item(list, "queue7") == nullptr)
            state.SkipWithError("the list was refused");
        plist_free(list);
    }
}
BENCHMARK_CAPTURE(readListPeer, xml, xmlList);
BENCHMARK_CAPTURE(readListPeer, binary, binaryList);

} // namespace
} // namespace orvan
