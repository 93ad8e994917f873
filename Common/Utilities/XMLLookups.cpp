#include "Common/Utilities/XMLLookups.h"

#include "Formats/Unicode.h"

#include <cstddef>

namespace orvan {

using platform::XMLNode;

const XMLNode* XMLTreeFind(const XMLNode* start, std::string_view name) {
    if (start == nullptr) return nullptr;
    const XMLNode* node = start->nextNode();
    while (node != nullptr && !(node->isElement() && node->name() == name))
        node = node->nextNode();
    return node;
}

std::optional<std::string_view> GetOVGValue(const XMLNode* start, std::string_view name) {
    const XMLNode* const found = XMLTreeFind(start, name);
    if (found == nullptr) return std::nullopt;
    return found->stringValue();
}

const XMLNode* XMLTreeFindWithName(const XMLNode* node, std::string_view value) {
    if (node == nullptr) return nullptr;
    for (std::size_t i = 0; i < node->attributeCount(); ++i)
        if (node->attributeAtIndex(i).value == value) return node;
    for (std::size_t i = 0; i < node->childCount(); ++i)
        if (const XMLNode* const found = XMLTreeFindWithName(node->childAtIndex(i), value)) return found;
    return nullptr;
}

std::string XMLGetPropertyValue(const XMLNode* node) {
    if (node == nullptr) return {};
    const XMLNode* const child = node->childAtIndex(node->childCount() < 2 ? 0 : 1);
    const XMLNode* const content = child != nullptr ? child->firstChild() : nullptr;
    if (content == nullptr) return {};
    return std::string(content->isElement() ? content->name() : content->stringValue());
}

std::string removeColonFromString(std::string_view text) {
    std::size_t last = 0;
    for (std::size_t position = 0; position < text.size();) {
        last = position;
        platform::decodeUTF8OrReplace(text, &position);
    }
    return std::string(text.substr(0, last));
}

} // namespace orvan
