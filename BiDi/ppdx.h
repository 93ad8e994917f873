// ppdx: a block of bytes as numbered short entries, which fit where only short keyword=value pairs pass: the
// status messages of a CUPS filter, and the attributes of a PPD.
//
// The block is one zlib stream (RFC 1950) of level 9, cut into pieces of 158 bytes. Each piece is the base64
// (RFC 4648, section 4) value of an entry whose keyword is a name followed by the piece's number, in
// lower-case hexadecimal and at least four digits wide: N0000, N0001, ... An entry with the next number and
// the value "" (two quote characters) ends the sequence.
#pragma once

#include "Formats/MessageSink.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace orvan {

// The largest block.
inline constexpr std::size_t kPpdxMaximumSize = std::size_t{16} * 1024 * 1024;
// A PPD keyword has at most 40 characters, the number at least four of them.
inline constexpr std::size_t kPpdxMaximumKeywordLength = 40;
inline constexpr std::size_t kPpdxMaximumNameLength = 36;

// Writes the block's entries to standard error, as "PPD:" lines of at most 2046 bytes with their line feed.
// An empty block is the terminator alone, and then `data` may be null.
//
// Nothing is written when the name is null or longer than kPpdxMaximumNameLength, when the block is larger
// than kPpdxMaximumSize, when `data` is null and `size` is not 0, or when the block has so many pieces that
// the name and their five-digit numbers do not fit a keyword. When the compressor fails, a message
// ("ERROR: deflate returned ...") goes to standard error and the terminator ends what was written so far.
void ppdxWriteData(const char* name, const void* data, std::size_t size);

// The same to a descriptor, each line in one write(2) unless the system takes less of it. Messages still go
// to standard error. False, and errno says why, when a line could not be written; the rest is left out then.
// `entries` (may be null) is told how many were written, with the one that ends the sequence.
bool ppdxWriteDataToDescriptor(
    int descriptor, const char* name, const void* data, std::size_t size, std::uint32_t* entries = nullptr);

// Takes this thread's messages while it exists, instead of standard error.
using PpdxMessages = platform::MessageSink<struct PpdxReader>;

// Looks an entry up: its value, zero-terminated and valid until the next call, or null when there is no such
// entry. `source` is whatever the reader was given.
using PpdxChunkGetter = const char* (*)(void* source, const char* keyword);

struct PpdxFree {
    void operator()(char* bytes) const { std::free(bytes); }
};
using PpdxData = std::unique_ptr<char, PpdxFree>;

// Puts a block together from the entries of a name. Answers its bytes with a zero byte behind them, which
// *size (when given) does not count.
//
// Null, and a size of 0, when an argument but `size` is null, when there is no entry with the number 0, or
// when memory runs out. Otherwise what could be decompressed: of a sequence that ends too early the
// beginning; of a damaged one the part before the damage, with a message ("ERROR: inflate returned ...") on
// standard error for each entry from there on. At most kPpdxMaximumSize bytes. A stream that has ended, or
// that asks for a preset dictionary, ends the reading whatever follows.
//
// Entries are taken in order up to the first that is missing or whose value decodes to no bytes. Characters
// outside the alphabet are skipped, the first "=" ends a value, and more than 158 bytes of one are dropped.
// The keyword of number 0 is cut to kPpdxMaximumKeywordLength; later ones that would have to be cut end the
// sequence.
//
// Null as well, but with a size above `limit`, as soon as there are more bytes than that.
PpdxData ppdxReadData(void* source, const char* name, PpdxChunkGetter getter, std::size_t* size,
    std::size_t limit = kPpdxMaximumSize);

// How the reading of a sequence ended.
enum class PpdxEnding {
    noEntry,  // there is no entry with the number 0, or no memory
    whole,    // the block is complete; that of an empty sequence is empty
    cutShort, // by a terminator before the block's end
    missing,  // the block goes on, and the next entry is not there
    damaged,  // from an entry on, nothing can be decompressed; with the last one, the check failed
    tooLarge, // the block is larger than kPpdxMaximumSize
};

struct PpdxReading {
    PpdxData bytes; // as ppdxReadData answers them
    std::size_t size = 0;
    PpdxEnding ending = PpdxEnding::noEntry;
    std::uint32_t number = 0; // of the entry where it ended; of the first one where damage shows
};

// The same as ppdxReadData, for who wants to know whether the block is whole.
PpdxReading ppdxRead(
    void* source, const char* name, PpdxChunkGetter getter, std::size_t limit = kPpdxMaximumSize);

// The keyword of an entry, cut to kPpdxMaximumKeywordLength.
std::string ppdxKeyword(const std::string& name, std::uint32_t number);

// What is wrong with a name, for people; "" when entries with it can be written, pass as messages of a filter
// (PPD format 4.3, section 2.4, and libcups have the characters of a PPD's main keyword), and be read.
std::string ppdxProblemWithName(const std::string& name);

} // namespace orvan
