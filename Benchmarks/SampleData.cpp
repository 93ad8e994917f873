#include "Benchmarks/SampleData.h"

#include <array>
#include <cstdint>
#include <random>

namespace orvan {
namespace {

constexpr std::uint32_t kSeed = 4500;

class ResponseWriter {
public:
    std::string write(std::size_t size) {
        text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
        for (const std::size_t share : {size / 3, size * 2 / 3, size})
            list(share);
        return std::move(text_) + "</dict>\n</plist>\n";
    }

private:
    // Entries until the text has this size.
    void list(std::size_t size) {
        text_ += "\t<key>" + std::string(kLists[lists_]) + "</key>\n\t<array>\n";
        do
            entry();
        while (text_.size() < size);
        text_ += "\t</array>\n";
        ++lists_;
    }

    void entry() {
        text_ += "\t\t<dict>\n";
        string("name", std::string(kWords[below(kWords.size())]) + " " + kWords[below(kWords.size())] + " " +
                           std::to_string(below(1000)));
        string("paper", kWords[below(kWords.size())]);
        integer("weight", 60 + below(240));
        integer("identifier", below(1U << 30U));
        text_ += below(2) == 0 ? "\t\t\t<key>isReady</key>\n\t\t\t<true/>\n"
                               : "\t\t\t<key>isReady</key>\n\t\t\t<false/>\n";
        if (below(3) == 0) {
            text_ += "\t\t\t<key>size</key>\n\t\t\t<dict>\n";
            integer("height", 100 + below(1000));
            integer("width", 100 + below(1000));
            text_ += "\t\t\t</dict>\n";
        }
        text_ += "\t\t</dict>\n";
    }

    void string(const char* key, const std::string& value) {
        text_ += "\t\t\t<key>" + std::string(key) + "</key>\n\t\t\t<string>" + value + "</string>\n";
    }
    void integer(const char* key, std::size_t value) {
        text_ += "\t\t\t<key>" + std::string(key) + "</key>\n\t\t\t<integer>" + std::to_string(value) +
                 "</integer>\n";
    }

    // Not a distribution of the library, whose numbers may change with its version.
    std::size_t below(std::size_t end) { return random_() % end; }

    static constexpr std::array kLists{"customPaperTypes", "inputTrays", "storedJobs"};
    static constexpr std::array kWords{"Heavyweight", "Glossy", "Envelope", "Recycled", "Letterhead",
        "Labels", "Bond", "Coated", "Office", "Invoice", "Preprinted", "Drilled", "Colour", "Tracing",
        "Cardstock", "Quarterly", "Satin matt", "Draft"};

    std::mt19937 random_{kSeed};
    std::string text_;
    std::size_t lists_ = 0;
};

} // namespace

std::string randomBytes(std::size_t size) {
    std::mt19937 random(kSeed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() & 0xFFU);
    return bytes;
}

std::string responseDocument(std::size_t size) {
    return ResponseWriter().write(size);
}

} // namespace orvan
