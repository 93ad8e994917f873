// Property lists: a tree of strings, numbers, booleans, dates, data, lists and dictionaries.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform {

class PropertyList {
public:
    using List = std::vector<PropertyList>;
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;

    // Reads a property list in any of the forms. Nothing when the bytes are none; then *error (when given) says what
    // is wrong and where.
    static std::optional<PropertyList> read(std::string_view bytes, std::string* error = nullptr);

    // The value as one kind; null when it is of another.
    const std::string* asString() const;
    const List* asList() const;
    const Dictionary* asDictionary() const;

    // The value under a key; null when this is not a dictionary or has no such key.
    const PropertyList* find(std::string_view key) const;
};

} // namespace platform
