// The older text form: "strings", <hexadecimal data>, (lists), {dictionaries}, and files of entries without
// braces.
#include "Formats/PropertyListReaders.h"
#include "Formats/Unicode.h"

#include <algorithm>

namespace platform {

namespace {

bool isBareCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_$+/:.-").find(c) != std::string_view::npos;
}

int hexadecimalDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Each reading function answers false after it has failed; the first failure's text stays.
class TextReader {
public:
    TextReader(std::string_view text, std::string& error)
        : text_(text), valuesLeft_(propertyListValueBudget(text.size())), error_(error) {}

    std::optional<PropertyList> read() {
        PropertyList root;
        if (!skipSpace()) return std::nullopt;
        if (atEnd()) return PropertyList(PropertyList::Dictionary());
        const bool startsWithString = isBareCharacter(peek()) || isQuote(peek());
        if (!readValue(root, 0)) return std::nullopt;
        if (!skipSpace()) return std::nullopt;
        if (atEnd()) return root;
        if (!startsWithString || (peek() != '=' && peek() != ';')) {
            fail("there is more after the value");
            return std::nullopt;
        }
        at_ = 0;
        valuesLeft_ = propertyListValueBudget(text_.size());
        PropertyList::Dictionary entries;
        if (!readEntries(entries, 0)) return std::nullopt;
        if (!atEnd()) {
            fail("a '}' closes nothing");
            return std::nullopt;
        }
        return PropertyList(std::move(entries));
    }

private:
    bool atEnd() const { return at_ >= text_.size(); }
    char peek() const { return text_[at_]; }
    static bool isQuote(char c) { return c == '"' || c == '\''; }

    bool failAt(std::size_t position, std::string_view reason) {
        const std::string_view before = text_.substr(0, position);
        const auto lines = std::count(before.begin(), before.end(), '\n');
        const std::size_t lineStart = before.rfind('\n') + 1; // npos + 1 is 0
        const auto characters = std::count_if(before.begin() + static_cast<std::ptrdiff_t>(lineStart),
            before.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; });
        error_ = "not a text property list: line " + std::to_string(lines + 1) + ", column " +
                 std::to_string(characters + 1) + ": ";
        error_ += reason;
        return false;
    }
    bool fail(std::string_view reason) { return failAt(std::min(at_, text_.size()), reason); }

    // Passes white space and comments.
    bool skipSpace() {
        while (!atEnd()) {
            const std::string_view rest = text_.substr(at_);
            if (std::string_view(" \t\r\n\f\v").find(rest.front()) != std::string_view::npos) {
                ++at_;
            } else if (rest.starts_with("\xE2\x80\xA8") || rest.starts_with("\xE2\x80\xA9")) {
                at_ += 3; // U+2028, U+2029: line and paragraph separator
            } else if (rest.starts_with("//")) {
                at_ = std::min(text_.size(), text_.find_first_of("\r\n", at_));
            } else if (rest.starts_with("/*")) {
                const std::size_t end = text_.find("*/", at_ + 2);
                if (end == std::string_view::npos) return fail("a comment is not closed");
                at_ = end + 2;
            } else {
                break;
            }
        }
        return true;
    }

    bool expect(char c, std::string_view where) {
        if (!skipSpace()) return false;
        if (!atEnd() && peek() == c) {
            ++at_;
            return true;
        }
        return fail("a '" + std::string(1, c) + "' is missing " + std::string(where));
    }

    // `depth` is the number of containers around the value.
    bool readValue(PropertyList& value, std::size_t depth) {
        if (!skipSpace()) return false;
        if (atEnd()) return fail("a value is missing");
        if (valuesLeft_-- == 0) return fail("it holds too many values");
        switch (peek()) {
        case '{':
            return readDictionary(value, depth);
        case '(':
            return readList(value, depth);
        case '<':
            return readData(value);
        default:
            std::string text;
            if (!readString(text)) return false;
            value = PropertyList(std::move(text));
            return true;
        }
    }

    bool readDictionary(PropertyList& value, std::size_t depth) {
        if (depth >= PropertyList::kMaximumDepth) return fail("it nests too deep");
        const std::size_t start = at_++;
        value = PropertyList(PropertyList::Dictionary());
        if (!readEntries(*value.asDictionary(), depth + 1)) return false;
        if (atEnd()) return failAt(start, "a dictionary is not closed");
        ++at_;
        return true;
    }

    // Reads `key = value;` and `key;`, whose value is the key, up to the end or a '}', which stays.
    bool readEntries(PropertyList::Dictionary& entries, std::size_t depth) {
        while (true) {
            if (!skipSpace()) return false;
            if (atEnd() || peek() == '}') return true;
            std::string key;
            if (!readString(key) || !skipSpace()) return false;
            PropertyList value;
            if (!atEnd() && peek() == ';') {
                value = PropertyList(key);
            } else {
                if (!expect('=', "after the key \"" + key + "\"")) return false;
                if (!readValue(value, depth)) return false;
            }
            if (!expect(';', "after the value of \"" + key + "\"")) return false;
            entries.insert_or_assign(std::move(key), std::move(value));
        }
    }

    bool readList(PropertyList& value, std::size_t depth) {
        if (depth >= PropertyList::kMaximumDepth) return fail("it nests too deep");
        const std::size_t start = at_++;
        value = PropertyList(PropertyList::List());
        PropertyList::List& list = *value.asList();
        while (true) {
            if (!skipSpace()) return false;
            if (atEnd()) return failAt(start, "a list is not closed");
            if (peek() == ')') break;
            if (!readValue(list.emplace_back(), depth + 1) || !skipSpace()) return false;
            if (atEnd()) return failAt(start, "a list is not closed");
            if (peek() == ')') break;
            if (!expect(',', "between the values of a list")) return false;
        }
        ++at_;
        return true;
    }

    bool readData(PropertyList& value) {
        const std::size_t start = at_++;
        PropertyList::Data data;
        int high = -1;
        for (;; ++at_) {
            if (atEnd()) return failAt(start, "data is not closed");
            const char c = peek();
            if (c == '>') break;
            if (std::string_view(" \t\r\n").find(c) != std::string_view::npos) continue;
            const int digit = hexadecimalDigit(c);
            if (digit < 0) return fail("there is something other than hexadecimal digits in data");
            if (high >= 0) data.push_back(static_cast<std::uint8_t>(high * 16 + digit));
            high = high >= 0 ? -1 : digit;
        }
        if (high >= 0) return fail("data ends in the middle of a byte");
        ++at_;
        value = PropertyList(std::move(data));
        return true;
    }

    bool readString(std::string& string) {
        if (isQuote(peek())) return readQuotedString(string);
        const std::size_t start = at_;
        while (!atEnd() && isBareCharacter(peek()))
            ++at_;
        if (at_ == start) return fail("neither a string nor another value starts here");
        string.assign(text_.substr(start, at_ - start));
        return true;
    }

    bool readQuotedString(std::string& string) {
        const std::size_t start = at_;
        const char quote = text_[at_++];
        const char ends[] = {quote, '\\', '\0'};
        while (true) {
            const std::size_t end = text_.find_first_of(ends, at_);
            if (end == std::string_view::npos) return failAt(start, "a string is not closed");
            string.append(text_.substr(at_, end - at_));
            at_ = end + 1;
            if (text_[end] == quote) return true;
            if (atEnd()) return failAt(start, "a string is not closed");
            if (!readEscape(string)) return false;
        }
    }

    // Reads what follows a backslash. What has no meaning of its own stands for itself.
    bool readEscape(std::string& string) {
        constexpr std::string_view kLetters = "abfnrtv";
        constexpr std::string_view kControls = "\a\b\f\n\r\t\v";
        const char c = peek();
        if (c == 'U') return readUnicodeEscape(string);
        if (c >= '0' && c <= '7') return readOctalEscape(string);
        const std::size_t letter = kLetters.find(c);
        if (letter != std::string_view::npos) {
            string.push_back(kControls[letter]);
            ++at_;
            return true;
        }
        const std::optional<char32_t> character = decodeUTF8(text_, &at_);
        if (!character) return fail("a character is not UTF-8");
        appendUTF8(string, *character);
        return true;
    }

    // One to three digits: a character of U+0000 to U+00FF.
    bool readOctalEscape(std::string& string) {
        const std::size_t start = at_;
        char32_t character = 0;
        for (; !atEnd() && at_ - start < 3 && peek() >= '0' && peek() <= '7'; ++at_)
            character = character * 8 + static_cast<char32_t>(peek() - '0');
        if (character > 0xFF) return failAt(start - 1, "an octal escape is above \\377");
        appendUTF8(string, character);
        return true;
    }

    // Four hexadecimal digits: a unit of UTF-16.
    bool readUnicodeEscape(std::string& string) {
        const std::size_t start = at_ - 1;
        std::optional<char32_t> character = readUTF16Unit();
        if (!character) return failAt(start, "\\U is not followed by four hexadecimal digits");
        if (isHighSurrogate(*character)) {
            std::optional<char32_t> low;
            if (text_.substr(at_).starts_with("\\U")) {
                ++at_;
                low = readUTF16Unit();
            }
            if (!low || !isLowSurrogate(*low)) return failAt(start, "half a surrogate pair stands alone");
            character = joinSurrogates(*character, *low);
        } else if (isLowSurrogate(*character)) {
            return failAt(start, "half a surrogate pair stands alone");
        }
        appendUTF8(string, *character);
        return true;
    }

    // The four digits after the 'U' at the present place.
    std::optional<char32_t> readUTF16Unit() {
        const std::string_view digits = text_.substr(at_ + 1, 4);
        if (digits.size() != 4) return std::nullopt;
        char32_t unit = 0;
        for (const char c : digits) {
            const int digit = hexadecimalDigit(c);
            if (digit < 0) return std::nullopt;
            unit = unit * 16 + static_cast<char32_t>(digit);
        }
        at_ += 5;
        return unit;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::uint64_t valuesLeft_;
    std::string& error_;
};

} // namespace

std::optional<PropertyList> readTextPropertyList(std::string_view text, std::string& error) {
    return TextReader(text, error).read();
}

} // namespace platform
