// What the benchmarks read and write; the same in every run.
#pragma once

#include <cstddef>
#include <string>

namespace orvan {

// Bytes that do not compress.
std::string randomBytes(std::size_t size);

// A printer's response, a property list in its XML form of at least `size` bytes and hardly more:
// dictionaries of strings, integers and booleans in lists, for paper types, trays and stored jobs.
std::string responseDocument(std::size_t size);

} // namespace orvan
