// Walking an element's children.
#pragma once

#include "Formats/XMLDocument.h"

#include <string>

namespace orvan {

// Calls `body` with each child element, in document order.
template <class Body>
void forEachElement(const platform::XMLNode& parent, const Body& body) {
    for (const platform::XMLNode* child = parent.firstChild(); child != nullptr; child = child->nextSibling())
        if (child->isElement()) body(*child);
}

inline std::string textOf(const platform::XMLNode& element) {
    return std::string(element.stringValue());
}

} // namespace orvan
