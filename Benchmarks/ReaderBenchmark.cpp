// The readers of XML documents and property lists, beside libraries that read the same.
#include "Benchmarks/Paired.h"
#include "Benchmarks/SampleData.h"
#include "Formats/PropertyList.h"
#include "Formats/XMLDocument.h"

#include <benchmark/benchmark.h>

#include <expat.h>
#include <plist/plist.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

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

constexpr std::size_t kListSize = std::size_t{1} << 20U;

std::string xmlList() {
    return responseDocument(kListSize);
}

// The binary form is the shorter one.
std::string binaryList() {
    std::string list;
    for (std::size_t size = kListSize; list.size() < kListSize; size += size / 8)
        list = platform::PropertyList::read(responseDocument(size))
                   .value_or(platform::PropertyList())
                   .writeBinary();
    return list;
}

bool readList(const std::string& bytes) {
    const auto list = platform::PropertyList::read(bytes);
    return list && list->find("inputTrays") != nullptr;
}

// Later releases of the library tell how it went and the format as well.
template <typename Result, typename... Format>
void readByPeer(Result (*read)(const char*, std::uint32_t, plist_t*, Format*...), const std::string& bytes,
    plist_t* list) {
    read(bytes.data(), static_cast<std::uint32_t>(bytes.size()), list, static_cast<Format*>(nullptr)...);
}

bool readListByPeer(const std::string& bytes) {
    plist_t list = nullptr;
    readByPeer(plist_from_memory, bytes, &list);
    const bool isRead = list != nullptr && plist_dict_get_item(list, "inputTrays") != nullptr;
    plist_free(list);
    return isRead;
}

void readLists(benchmark::State& state, std::string (*document)()) {
    const std::string bytes = document();
    measurePaired(
        state, [&] { return readList(bytes); }, [&] { return readListByPeer(bytes); });
}
BENCHMARK_CAPTURE(readLists, xml, xmlList)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readLists, binary, binaryList)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orvan
