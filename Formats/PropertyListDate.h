// The dates of property lists as text, "2013-07-09T10:00:00Z".
#pragma once

#include "Formats/PropertyList.h"

namespace platform {

// Nothing when the text is not a date of the years 1 to 9999 in exactly this format.
std::optional<PropertyList::Date> parsePropertyListDate(std::string_view text);

// Fractions of a second are dropped.
std::string formatPropertyListDate(PropertyList::Date date);

// Whether the moment is in the years 1 to 9999.
bool isInCalendar(PropertyList::Date date);

// The nearest moment of these years; second 0 for a NaN.
PropertyList::Date clampToCalendar(PropertyList::Date date);

} // namespace platform
