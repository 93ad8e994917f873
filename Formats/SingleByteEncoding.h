// Encodings of one byte a character.
#pragma once

#include <span>
#include <string>

namespace platform {

// Fills the table with the character (Unicode) of each byte, -1 for a byte that has none; false, and the
// table is as it was, for a name that is none of the families ISO-8859, Windows (125x, 874) and KOI8 (IANA's
// names and the usual others, in any case) or that GLib does not know.
bool fillSingleByteEncoding(const std::string& name, std::span<int, 256> characters);

} // namespace platform
