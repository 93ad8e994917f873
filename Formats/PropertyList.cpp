#include "Formats/PropertyList.h"

#include "Formats/PropertyListDate.h"
#include "Formats/PropertyListReaders.h"
#include "Formats/Unicode.h"

#include <limits>
#include <type_traits>

namespace platform {

namespace {

constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";

// A text that starts with data in angle brackets is told from the XML form by what follows the bracket.
bool looksLikeXML(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos) return false;
    text.remove_prefix(start);
    return text.starts_with("<?") || text.starts_with("<!") || text.starts_with("<plist");
}

std::optional<PropertyList> readAnyText(std::string_view text, std::string& error) {
    if (text.empty()) {
        error = "not a property list: there is nothing in it";
        return std::nullopt;
    }
    if (const std::size_t bad = findInvalidUTF8(text); bad != std::string_view::npos) {
        error = "not a property list: byte " + std::to_string(bad) + " is not UTF-8 text";
        return std::nullopt;
    }
    return readTextPropertyList(text, error);
}

std::optional<PropertyList> readUTF16(std::string_view bytes, ByteOrder order, std::string& error) {
    std::size_t bad = 0;
    const std::optional<std::string> text = utf8FromUTF16(bytes, order, &bad);
    if (!text) {
        error = "not a property list: byte " + std::to_string(bad + kBigEndianMark.size()) +
                " is not UTF-16 text (half a character)";
        return std::nullopt;
    }
    return looksLikeXML(*text) ? readXMLPropertyList(*text, "UTF-8", error) : readAnyText(*text, error);
}

std::optional<PropertyList> readAnyForm(std::string_view bytes, std::string& error) {
    if (bytes.starts_with("bplist")) return readBinaryPropertyList(bytes, error);
    if (bytes.starts_with(kBigEndianMark)) return readUTF16(bytes.substr(2), ByteOrder::big, error);
    if (bytes.starts_with(kLittleEndianMark)) return readUTF16(bytes.substr(2), ByteOrder::little, error);
    if (bytes.starts_with(kUTF8Mark)) bytes.remove_prefix(kUTF8Mark.size());
    return looksLikeXML(bytes) ? readXMLPropertyList(bytes, nullptr, error) : readAnyText(bytes, error);
}

} // namespace

static_assert(
    std::is_nothrow_move_constructible_v<PropertyList>, "lists must move their values as they grow");

PropertyList::PropertyList(Date date) : value_(std::in_place_type<Date>, clampToCalendar(date)) {}

PropertyList::PropertyList(Dictionary dictionary)
    : value_(std::in_place_type<DictionaryBox>, std::move(dictionary)) {}

PropertyList::DictionaryBox::DictionaryBox(Dictionary dictionary)
    : dictionary_(std::make_unique<Dictionary>(std::move(dictionary))) {}

PropertyList::DictionaryBox::DictionaryBox(const DictionaryBox& other) : DictionaryBox(*other.dictionary_) {}

PropertyList::DictionaryBox& PropertyList::DictionaryBox::operator=(const DictionaryBox& other) {
    if (this != &other) dictionary_ = std::make_unique<Dictionary>(*other.dictionary_);
    return *this;
}

const PropertyList::Dictionary* PropertyList::asDictionary() const {
    const auto* box = std::get_if<DictionaryBox>(&value_);
    return box != nullptr ? box->get() : nullptr;
}

PropertyList::Dictionary* PropertyList::asDictionary() {
    const auto* box = std::get_if<DictionaryBox>(&value_);
    return box != nullptr ? box->get() : nullptr;
}

std::optional<PropertyList> PropertyList::read(std::string_view bytes, Failure& error) {
    std::string reason;
    std::optional<PropertyList> list = readAnyForm(bytes, reason);
    if (!list) error = std::move(reason);
    return list;
}

std::optional<std::uint64_t> PropertyList::asUnsignedInteger() const {
    if (const auto* large = std::get_if<std::uint64_t>(&value_)) return *large;
    const auto* value = std::get_if<std::int64_t>(&value_);
    if (value == nullptr || *value < 0) return std::nullopt;
    return static_cast<std::uint64_t>(*value);
}

const PropertyList* PropertyList::find(std::string_view key) const {
    const Dictionary* dictionary = asDictionary();
    if (dictionary == nullptr) return nullptr;
    const auto entry = dictionary->find(key);
    return entry != dictionary->end() ? &entry->second : nullptr;
}

const std::string* PropertyList::findString(std::string_view key) const {
    const PropertyList* const value = find(key);
    return value != nullptr ? value->asString() : nullptr;
}

bool PropertyList::operator==(const PropertyList& other) const {
    return value_ == other.value_;
}

} // namespace platform
