// What a filter tells the print scheduler: lines on standard error, filter(7).
#pragma once

#include <string>
#include <string_view>

namespace orvan {

// Each of these writes one line, whole and with one system call. Control characters become spaces, and a line
// that the scheduler's buffer of 2048 bytes could not take is cut.

void tellDebug(const std::string& text);
void tellInfo(const std::string& text);
void tellWarning(const std::string& text);
// For the person in front of the queue: what was tried, why it failed, what to do.
void tellError(const std::string& text);

// Sets ('+') or clears ('-') reasons of the printer's state, comma-separated keywords of RFC 8011, section
// 5.4.12. Nothing is written for no reasons.
void tellState(char sign, const std::string& reasons);
// Attributes of the printer: name=value, quoted as filter(7) wants it.
void tellAttributes(const std::string& attributes);

// Sets an attribute of the queue's PPD: a keyword, and a value without blanks.
void tellPPD(const std::string& keyword, const std::string& value);

} // namespace orvan
