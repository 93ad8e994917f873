#include "Formats/Base64.h"
#include "Formats/PropertyList.h"
#include "Formats/PropertyListDate.h"
#include "Formats/Unicode.h"

#include <array>
#include <charconv>
#include <cmath>

namespace platform {

namespace {

// The text that stands for a character in an element; empty when the character stands for itself.
std::string_view escaped(char32_t character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\r': // as itself it would be read as a line feed
        return "&#13;";
    case '\t':
    case '\n':
        return {};
    case 0xFFFE:
    case 0xFFFF:
    case kReplacementCharacter: // also what stands for bytes that are not UTF-8
        return "\xEF\xBF\xBD";
    default:
        return character < 0x20 ? std::string_view("\xEF\xBF\xBD") : std::string_view();
    }
}

bool isPlain(char c) {
    return c >= ' ' && c <= '~' && c != '&' && c != '<' && c != '>';
}

void appendText(std::string& out, std::string_view text) {
    std::size_t written = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        if (isPlain(text[at])) {
            ++at;
            continue;
        }
        const std::size_t start = at;
        const std::string_view replacement = escaped(decodeUTF8OrReplace(text, &at));
        if (replacement.empty()) continue;
        out.append(text.substr(written, start - written));
        out.append(replacement);
        written = at;
    }
    out.append(text.substr(written));
}

template <class T>
void appendNumber(std::string& out, T value) {
    std::array<char, 32> text{};
    const auto [end, code] = std::to_chars(text.data(), text.data() + text.size(), value);
    out.append(text.data(), end);
}

} // namespace

class PropertyListXMLWriter {
public:
    std::string write(const PropertyList& root) {
        out_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
        writeValue(root);
        out_ += "</plist>\n";
        return std::move(out_);
    }

private:
    void writeValue(const PropertyList& value) {
        std::visit([this](const auto& held) { write(held); }, value.value_);
    }

    void line(std::string_view text) {
        out_.append(depth_, '\t');
        out_ += text;
        out_ += '\n';
    }

    // One element on a line of its own; `writeContents` appends its contents.
    template <class Writer>
    void element(std::string_view name, Writer writeContents) {
        out_.append(depth_, '\t');
        out_.append("<").append(name).append(">");
        writeContents();
        out_.append("</").append(name).append(">\n");
    }

    void write(const std::string& text) {
        element("string", [&] { appendText(out_, text); });
    }
    void write(std::int64_t value) {
        element("integer", [&] { appendNumber(out_, value); });
    }
    void write(std::uint64_t value) {
        element("integer", [&] { appendNumber(out_, value); });
    }
    void write(double value) {
        element("real", [&] { std::isnan(value) ? void(out_ += "nan") : appendNumber(out_, value); });
    }
    void write(bool value) { line(value ? "<true/>" : "<false/>"); }
    void write(PropertyList::Date date) {
        element("date", [&] { out_ += formatPropertyListDate(date); });
    }
    void write(const PropertyList::Data& data) {
        element("data", [&] { appendBase64(out_, data); });
    }
    void write(const PropertyList::List& list) {
        if (list.empty()) return line("<array/>");
        line("<array>");
        ++depth_;
        for (const PropertyList& value : list)
            writeValue(value);
        --depth_;
        line("</array>");
    }
    void write(const PropertyList::DictionaryBox& box) {
        const PropertyList::Dictionary& dictionary = *box.get();
        if (dictionary.empty()) return line("<dict/>");
        line("<dict>");
        ++depth_;
        for (const auto& [key, value] : dictionary) {
            element("key", [&, text = std::string_view(key)] { appendText(out_, text); });
            writeValue(value);
        }
        --depth_;
        line("</dict>");
    }

    std::string out_;
    std::size_t depth_ = 0;
};

std::string PropertyList::writeXML() const {
    return PropertyListXMLWriter().write(*this);
}

} // namespace platform
