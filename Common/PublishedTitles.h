// The names that an office gave its custom papers, as titles in a queue's PPD: for every client of the
// scheduler that reads titles there.
#pragma once

#include "Formats/Failure.h"

#include <cups/ppd.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

struct PaperTitle {
    std::string type; // the paper is the choice "CustomType" and this
    std::string name; // UTF-8
};

// The PPD's text with these names, and no others, as titles of its custom papers, in each of its languages.
// Keywords and code stay, and so does all else. A title is cut to what libcups reads of one, 79 bytes, and
// what the format cannot have in a title is in hexadecimal numbers (PPD format 4.3, section 3.5); a name
// without a choice is left out. Titles that are not ASCII need a PPD in UTF-8, which it then is. The titles
// as they were are at the end, as attributes "*OVNTitle". Nothing, and why in `error`, when the PPD is in an
// encoding that is not known.
std::optional<std::string> withPublishedTitles(
    const std::string& ppd, const std::vector<PaperTitle>& papers, platform::Failure& error);

// The text as it was.
std::string withoutPublishedTitles(const std::string& ppd);

// As much of the name as clients see.
std::string publishedTitle(std::string_view name);

// The choices of the record that have an office's name as their title in the PPD itself, with that title.
std::map<std::string, std::string> publishedTitles(ppd_file_t& record);

} // namespace orvan
