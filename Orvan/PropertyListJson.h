// Property lists as JSON.
#pragma once

#include "Formats/PropertyList.h"

#include <nlohmann/json.hpp>

#include <string>

namespace orvan {

// Strings, booleans, lists and dictionaries are JSON's own; integers and reals are numbers, a real that JSON
// has no number for (infinite, not a number) is null. A date is {"date": "2013-07-09T10:00:00Z"}, data
// {"data": "base 64"}.
nlohmann::ordered_json jsonFromPropertyList(const platform::PropertyList& list);

// JSON as text, whole whatever bytes its strings have: what is no UTF-8 is U+FFFD. On one line, or indented
// by so many columns.
std::string jsonText(const nlohmann::ordered_json& json, int indent = -1);

} // namespace orvan
