// The readers of the single forms, behind PropertyList::read. Each answers nothing, and says in `error` what
// is wrong and where, when the bytes are not a property list in its form.
#pragma once

#include "Formats/PropertyList.h"

#include <algorithm>

namespace platform {

// How many values, keys included, an input of the size may stand for. A value takes some 40 bytes, a byte of
// input can name one; up to a mebibyte each byte may, beyond it every fourth.
constexpr std::uint64_t propertyListValueBudget(std::size_t size) {
    return std::min<std::uint64_t>(size, (std::uint64_t{1} << 20U) + size / 4);
}

// `encoding` overrides what the document declares; null leaves it to the document.
std::optional<PropertyList> readXMLPropertyList(
    std::string_view bytes, const char* encoding, std::string& error);

std::optional<PropertyList> readBinaryPropertyList(std::string_view bytes, std::string& error);

// `text` is valid UTF-8 without a byte order mark.
std::optional<PropertyList> readTextPropertyList(std::string_view text, std::string& error);

} // namespace platform
