// The printer's answers before they are decoded: entries of the ppdx encoding, and where they are looked up.
#pragma once

#include "BiDi/EntryDictionary.h"

#include <string_view>

namespace orvan {

// The entries in what a command filter wrote to its standard error: those of the lines that begin with
// "PPD: ", which are pieces with a "=" in them, separated by white space; the first "=" ends the name. Of
// several entries of one name the last one counts. Output that is not UTF-8 as a whole has no entries.
EntryDictionary entriesInTaskOutput(std::string_view output);

// The two sources of ppdxReadData. Null when either argument is null or there is no such entry.

// `source` is an open ppd_file_t: the value of its first attribute with the keyword, whatever the attribute's
// spec. As all look-ups of libcups, it ignores the case of letters.
const char* ppdx_get_chunk_ppd(void* source, const char* keyword);

// `source` is an EntryDictionary.
const char* ppdx_get_chunk_nsdictionary(void* source, const char* keyword);

} // namespace orvan
