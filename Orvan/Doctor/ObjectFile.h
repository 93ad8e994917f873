// For which computers a shared object is.
#pragma once

#include <filesystem>
#include <string>

namespace orvan {

// "ARM, 64 bits": the machine and the class of the file's ELF header, elf(5), when this process is for
// others and cannot load it; "" when it is for the same, or no ELF file.
std::string otherArchitecture(const std::filesystem::path& file);
// Of this process.
std::string ownArchitecture();

} // namespace orvan
