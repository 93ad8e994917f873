#include "Formats/Base64.h"
#include "Formats/ExpatParser.h"
#include "Formats/PropertyListDate.h"
#include "Formats/PropertyListReaders.h"

#include <array>
#include <charconv>
#include <climits>
#include <cstring>

namespace platform {

namespace {

enum class Element { plist, list, dictionary, key, string, integer, real, boolTrue, boolFalse, date, data };

struct ElementName {
    const char* name;
    Element element;
};

// The commonest first.
constexpr std::array kElementNames = {
    ElementName{"key", Element::key},
    ElementName{"string", Element::string},
    ElementName{"integer", Element::integer},
    ElementName{"dict", Element::dictionary},
    ElementName{"array", Element::list},
    ElementName{"true", Element::boolTrue},
    ElementName{"false", Element::boolFalse},
    ElementName{"real", Element::real},
    ElementName{"date", Element::date},
    ElementName{"data", Element::data},
    ElementName{"plist", Element::plist},
};

const ElementName* findElement(const char* name) {
    for (const ElementName& element : kElementNames) {
        if (element.name[0] == name[0] && std::strcmp(element.name, name) == 0) return &element;
    }
    return nullptr;
}

constexpr bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Asked twice for each element, so that a plain loop pays.
bool isBlank(std::string_view text) {
    for (const char c : text) {
        if (!isSpace(c)) return false;
    }
    return true;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

struct Integer {
    bool isNegative = false;
    std::uint64_t magnitude = 0;
};

// Decimal, or hexadecimal after "0x", with an optional sign.
std::optional<Integer> parseInteger(std::string_view text) {
    Integer integer{.isNegative = text.starts_with('-')};
    if (integer.isNegative || text.starts_with('+')) text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);
    const char* end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, integer.magnitude, hexadecimal ? 16 : 10);
    const bool tooLow = integer.isNegative && integer.magnitude > std::uint64_t{1} << 63U;
    if (code != std::errc() || stop != end || tooLow) return std::nullopt;
    return integer;
}

std::optional<double> parseReal(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, value);
    if (code != std::errc() || stop != end) return std::nullopt;
    return value;
}

// Builds the tree in place: an open container is the last value of the container around it, so that its
// address holds until it is closed.
class XMLReader {
public:
    XMLReader(XML_Parser parser, std::string& error) : parser_(parser), error_(error) {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, &XMLReader::onStart, &XMLReader::onEnd);
        XML_SetCharacterDataHandler(parser, &XMLReader::onText);
        XML_SetStartDoctypeDeclHandler(parser, &XMLReader::onDoctype);
        XML_SetSkippedEntityHandler(parser, &XMLReader::onSkippedEntity);
        containers_.reserve(16);
    }

    std::optional<PropertyList> read(std::string_view bytes) {
        if (bytes.size() > INT_MAX) {
            error_ = "not read as a property list: it is larger than 2 GiB";
            return std::nullopt;
        }
        if (XML_Parse(parser_, bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) != XML_STATUS_OK &&
            !failed_)
            fail(XML_ErrorString(XML_GetErrorCode(parser_)));
        if (failed_) return std::nullopt;
        return std::move(root_);
    }

private:
    // Exactly one of the two is there.
    struct Container {
        PropertyList::List* list = nullptr;
        PropertyList::Dictionary* dictionary = nullptr;
    };

    static void XMLCALL onStart(void* self, const XML_Char* name, const XML_Char**) {
        static_cast<XMLReader*>(self)->start(name);
    }
    static void XMLCALL onEnd(void* self, const XML_Char*) { static_cast<XMLReader*>(self)->end(); }
    static void XMLCALL onText(void* self, const XML_Char* text, int length) {
        static_cast<XMLReader*>(self)->text({text, static_cast<std::size_t>(length)});
    }
    static void XMLCALL onDoctype(
        void* self, const XML_Char*, const XML_Char*, const XML_Char*, int hasInternalSubset) {
        if (hasInternalSubset != 0)
            static_cast<XMLReader*>(self)->fail(
                "the document type has an internal subset, which is not allowed");
    }
    static void XMLCALL onSkippedEntity(void* self, const XML_Char* name, int) {
        static_cast<XMLReader*>(self)->fail("the entity \"" + std::string(name) + "\" is not defined");
    }

    void fail(std::string_view reason) {
        if (failed_) return;
        failed_ = true;
        error_ = "not an XML property list: " + expatPosition(parser_) + ": ";
        error_ += reason;
        XML_StopParser(parser_, XML_FALSE);
    }

    void start(const char* name) {
        if (failed_) return;
        const ElementName* found = findElement(name);
        if (found == nullptr) return fail(std::string("<") + name + "> is not an element of property lists");
        if (scalar_) return fail(std::string("<") + name + "> stands inside <" + scalar_->name + ">");
        if ((found->element == Element::plist) == insidePlist_)
            return fail(
                insidePlist_ ? "<plist> stands inside <plist>" : "the document's element is not <plist>");
        const bool inDictionary = !containers_.empty() && containers_.back().dictionary != nullptr;
        switch (found->element) {
        case Element::plist:
            insidePlist_ = true;
            return;
        case Element::key:
            if (!inDictionary) return fail("<key> stands outside a dictionary");
            if (haveKey_) return fail("the key \"" + key_ + "\" has no value");
            break;
        default:
            if (inDictionary && !haveKey_) return fail(std::string("<") + name + "> has no key before it");
            if (containers_.empty() && haveRoot_) return fail("<plist> has more than one value");
        }
        if (found->element == Element::list || found->element == Element::dictionary)
            return open(found->element);
        scalar_ = found;
        text_.clear();
    }

    void open(Element element) {
        if (containers_.size() >= PropertyList::kMaximumDepth) return fail("it nests too deep");
        if (element == Element::list)
            containers_.push_back({.list = add(PropertyList::List()).asList()});
        else
            containers_.push_back({.dictionary = add(PropertyList::Dictionary()).asDictionary()});
    }

    void text(std::string_view text) {
        if (failed_) return;
        if (scalar_ != nullptr)
            text_.append(text);
        else if (!isBlank(text))
            fail("there is text between the values");
    }

    void end() {
        if (failed_) return;
        if (scalar_ != nullptr) {
            endScalar(scalar_->element);
            scalar_ = nullptr;
        } else if (containers_.empty()) {
            if (!haveRoot_) fail("<plist> has no value");
        } else if (haveKey_) {
            fail("the key \"" + key_ + "\" has no value");
        } else {
            containers_.pop_back();
        }
    }

    void endScalar(Element element) {
        switch (element) {
        case Element::key:
            key_.assign(text_);
            haveKey_ = true;
            return;
        case Element::string:
            add(std::string(text_));
            return;
        case Element::integer:
            return endInteger();
        case Element::real:
            return addParsed(parseReal(trimmed(text_)), "a number");
        case Element::date:
            return addParsed(parsePropertyListDate(trimmed(text_)), "a date (YYYY-MM-DDThh:mm:ssZ)");
        case Element::data:
            return addParsed(decodeBase64(text_), "base 64 data");
        case Element::boolTrue:
        case Element::boolFalse:
            if (!isBlank(text_)) return fail("there is text in a boolean");
            add(element == Element::boolTrue);
            return;
        case Element::plist:
        case Element::list:
        case Element::dictionary:
            return;
        }
    }

    void endInteger() {
        const std::optional<Integer> integer = parseInteger(trimmed(text_));
        if (!integer) return failValue("an integer of 64 bits");
        if (integer->isNegative)
            add(static_cast<std::int64_t>(~integer->magnitude + 1));
        else
            add(integer->magnitude);
    }

    template <class T>
    void addParsed(std::optional<T> value, const char* what) {
        if (value)
            add(std::move(*value));
        else
            failValue(what);
    }

    void failValue(const char* expected) {
        constexpr std::size_t kShown = 40;
        fail("\"" + text_.substr(0, kShown) + (text_.size() > kShown ? "...\"" : "\"") + " is not " +
             expected);
    }

    template <class T>
    PropertyList& add(T&& value) {
        if (containers_.empty()) {
            haveRoot_ = true;
            return root_ = PropertyList(std::forward<T>(value));
        }
        const Container& container = containers_.back();
        if (container.list != nullptr) return container.list->emplace_back(std::forward<T>(value));
        // Writers mostly sort their keys.
        PropertyList::Dictionary& dictionary = *container.dictionary;
        const std::size_t before = dictionary.size();
        const auto entry = dictionary.try_emplace(dictionary.end(), std::move(key_), std::forward<T>(value));
        if (dictionary.size() == before) entry->second = PropertyList(std::forward<T>(value));
        haveKey_ = false;
        return entry->second;
    }

    XML_Parser parser_;
    std::string& error_;
    bool failed_ = false;

    PropertyList root_;
    bool insidePlist_ = false;
    bool haveRoot_ = false;
    std::vector<Container> containers_;
    std::string key_;
    bool haveKey_ = false;
    const ElementName* scalar_ = nullptr; // the element whose text is being collected
    std::string text_;
};

} // namespace

std::optional<PropertyList> readXMLPropertyList(
    std::string_view bytes, const char* encoding, std::string& error) {
    const ExpatParser parser(XML_ParserCreate(encoding));
    if (!parser) {
        error = "not read as a property list: out of memory";
        return std::nullopt;
    }
    return XMLReader(parser.get(), error).read(bytes);
}

} // namespace platform
