// The titles of a PPD's options and choices in a person's language.
#pragma once

#include <cups/ppd.h>

#include <string>
#include <vector>

namespace orvan {

// The first of `preferred` (language tags, best first) that is among `offered` and that the PPD has titles
// in: its own language (*LanguageVersion) or one of *cupsLanguages. Otherwise the PPD's own language; "en"
// for a name that is not known.
std::string languageOf(
    ppd_file_t& record, const std::vector<std::string>& preferred, const std::vector<std::string>& offered);

// Gives the record's options and choices their titles in a language that languageOf answered, from the PPD's
// text (lines "*fr.Translation KEYWORD/TITLE" and "*fr.KEYWORD CHOICE/TITLE", cupsppd(5)), which
// `descriptor` has and is read from its beginning; it stays open. What has no such line keeps the title that
// it has. libcups's own ppdLocalize knows no LANGUAGE and no second choice, and its record has lost all lines
// of other languages.
void setTitles(ppd_file_t& record, const std::string& language, int descriptor);

} // namespace orvan
