// Finding things in XML documents. Of the given vocabulary; nothing here calls GetOVGValue,
// XMLGetPropertyValue and removeColonFromString. What is found belongs to the document and is good as long as
// it is; a null node has nothing in it.
#pragma once

#include "Formats/XMLDocument.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvan {

// The first element behind `start` in document order, inside it or not, with exactly that name; null when
// there is none up to the document's end.
const platform::XMLNode* XMLTreeFind(const platform::XMLNode* start, std::string_view name);

// The text of what XMLTreeFind finds: that of all texts below it, in order. Nothing when it finds nothing.
std::optional<std::string_view> GetOVGValue(const platform::XMLNode* start, std::string_view name);

// The first element in document order, the node itself or below it, with an attribute of exactly that value,
// whatever the attribute's name; null when there is none.
const platform::XMLNode* XMLTreeFindWithName(const platform::XMLNode* node, std::string_view value);

// The value of a property element: the text (of an element, its name) of the first child of its second child,
// or of its only one. Empty when there is none.
std::string XMLGetPropertyValue(const platform::XMLNode* node);

// The text without its last character, whichever that is: "Paper Type:" is "Paper Type", and "Paper" is
// "Pape". An empty text stays empty.
std::string removeColonFromString(std::string_view text);

} // namespace orvan
