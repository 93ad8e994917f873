// Property lists: a tree of strings, numbers, booleans, dates, data, lists and dictionaries.
//
// A value type: a copy is deep, a value is used on one thread at a time. Nothing here throws, memory
// exhaustion aside. A value that was moved from can be assigned to and destroyed. Writing, comparing, copying
// and destroying go as deep as the tree does; what was read is never deeper than kMaximumDepth.
#pragma once

#include "Formats/Failure.h"

#include <concepts>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

class PropertyList {
public:
    using Data = std::vector<std::uint8_t>;
    using List = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;

    // A moment of the years 1 to 9999, in seconds since 2001-01-01 00:00:00 UTC.
    struct Date {
        double seconds = 0;
        bool operator==(const Date&) const = default;
    };

    // How deep lists and dictionaries may nest in what is read.
    static constexpr std::size_t kMaximumDepth = 512;

    // The empty string.
    PropertyList() = default;
    // Text is UTF-8. Other bytes are kept as they are here, but written as U+FFFD.
    PropertyList(std::string text) : value_(std::in_place_type<std::string>, std::move(text)) {}
    PropertyList(std::string_view text) : value_(std::in_place_type<std::string>, text) {}
    PropertyList(const char* text) : value_(std::in_place_type<std::string>, text) {}
    PropertyList(std::same_as<bool> auto value) : value_(std::in_place_type<bool>, value) {}
    PropertyList(std::signed_integral auto value) : value_(std::in_place_type<std::int64_t>, value) {}
    template <std::unsigned_integral T>
    requires(!std::same_as<T, bool>) PropertyList(T value) {
        // Each integer has one representation, so that equal values compare equal.
        if (value <= std::uint64_t{std::numeric_limits<std::int64_t>::max()})
            value_.emplace<std::int64_t>(static_cast<std::int64_t>(value));
        else
            value_.emplace<std::uint64_t>(value);
    }
    PropertyList(double value) : value_(std::in_place_type<double>, value) {}
    // A moment outside the calendar becomes the nearest that is in it; a NaN becomes second 0.
    PropertyList(Date date);
    PropertyList(Data data) : value_(std::in_place_type<Data>, std::move(data)) {}
    PropertyList(List list) : value_(std::in_place_type<List>, std::move(list)) {}
    PropertyList(Dictionary dictionary);

    // Reads a property list in any of the forms: XML, binary ("bplist00"), the older text form, and the
    // strings file (the entries of a text dictionary without its braces). Nothing when the bytes are none;
    // then `error` says what is wrong and where.
    //
    // Of several entries with the same key the last one counts. Text may be UTF-8, with or without byte order
    // mark, or UTF-16 with one; the XML form may also declare an encoding that expat knows. Text in which
    // nothing but white space and comments stands is an empty strings file, so an empty dictionary; no bytes
    // at all are nothing.
    //
    // Refused are more than kMaximumDepth levels, more values than the input has bytes (beyond a mebibyte:
    // than a quarter of its bytes) or, by sharing in the binary form, more text and data than 16 MiB plus 32
    // times its size; cycles; undefined entities and a document type with an internal subset (an external one
    // is never fetched). Null, UID and set, which only the binary form has, are not values here and are
    // refused as well.
    static std::optional<PropertyList> read(std::string_view bytes, Failure& error = ignoredFailure());

    // The value as one kind; null when it is of another.
    const std::string* asString() const { return std::get_if<std::string>(&value_); }
    const Data* asData() const { return std::get_if<Data>(&value_); }
    const List* asList() const { return std::get_if<List>(&value_); }
    List* asList() { return std::get_if<List>(&value_); }
    const Dictionary* asDictionary() const;
    Dictionary* asDictionary();
    std::optional<bool> asBoolean() const { return get<bool>(); }
    std::optional<double> asReal() const { return get<double>(); }
    std::optional<Date> asDate() const { return get<Date>(); }
    // Nothing as well when the integer is not in the type's range. An integer is no real and no boolean.
    std::optional<std::int64_t> asInteger() const { return get<std::int64_t>(); }
    std::optional<std::uint64_t> asUnsignedInteger() const;

    // The value under a key; null when this is not a dictionary or has no such key.
    const PropertyList* find(std::string_view key) const;
    // The text under a key; null as well when the value is no text.
    const std::string* findString(std::string_view key) const;

    // The XML form, which `read` turns back into an equal value, with these exceptions: fractions of a second
    // of a date are dropped, and characters that XML 1.0 has no way to carry (most control characters,
    // U+FFFE, U+FFFF) are replaced by U+FFFD.
    std::string writeXML() const;

    // The binary form, which `read` turns back into an equal value.
    std::string writeBinary() const;

    // Equal kind and value; a NaN is equal to nothing.
    bool operator==(const PropertyList& other) const;

private:
    friend class PropertyListBinaryReader;
    friend class PropertyListXMLWriter;
    friend class PropertyListBinaryWriter;

    template <class T>
    std::optional<T> get() const {
        const T* value = std::get_if<T>(&value_);
        return value != nullptr ? std::optional<T>(*value) : std::nullopt;
    }

    // A dictionary by itself is larger than every other kind, and would make every value as large. Null only
    // after it was moved from.
    class DictionaryBox {
    public:
        DictionaryBox() : dictionary_(std::make_unique<Dictionary>()) {}
        explicit DictionaryBox(Dictionary dictionary);
        DictionaryBox(const DictionaryBox& other);
        DictionaryBox(DictionaryBox&&) noexcept = default;
        DictionaryBox& operator=(const DictionaryBox& other);
        DictionaryBox& operator=(DictionaryBox&&) noexcept = default;
        ~DictionaryBox() = default;

        Dictionary* get() const { return dictionary_.get(); }
        bool operator==(const DictionaryBox& other) const { return *dictionary_ == *other.dictionary_; }

    private:
        std::unique_ptr<Dictionary> dictionary_;
    };

    // std::uint64_t is for the integers above std::int64_t alone.
    std::variant<std::string, std::int64_t, std::uint64_t, double, bool, Date, Data, List, DictionaryBox>
        value_;
};

} // namespace platform
