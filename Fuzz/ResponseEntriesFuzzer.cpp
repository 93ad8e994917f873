// Whatever a command filter writes: the entries are pieces of it, and are found again by their names.
#include "BiDi/ResponseEntries.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void promise(bool kept) {
    if (!kept) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view output(reinterpret_cast<const char*>(data), size);
    orvan::EntryDictionary entries = orvan::entriesInTaskOutput(output);
    promise(entries.empty() || output.find("PPD: ") != std::string_view::npos);
    for (const auto& [name, value] : entries) {
        promise(name.find_first_of("= \t\n\r") == std::string_view::npos);
        promise(value.find_first_of(" \t\n\r") == std::string_view::npos);
        promise(output.find(std::string(name).append(1, '=').append(value)) != std::string_view::npos);
        // A keyword is zero-terminated, so one that holds a zero is never asked for.
        if (name.find('\0') != std::string_view::npos) continue;
        const char* const found = orvan::ppdx_get_chunk_nsdictionary(&entries, std::string(name).c_str());
        promise(found != nullptr && value.starts_with(found));
    }
    return 0;
}
