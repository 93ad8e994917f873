// A command file's commands and credentials are pieces of its lines.
#include "CommandFilter/Program/CommandFile.h"

#include <cstdint>
#include <cstdlib>

namespace {

void promise(bool kept) {
    if (!kept) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto file = orvan::readCommandFile(text);
    promise(file.has_value() == text.starts_with("#CUPS-COMMAND"));
    if (!file) return 0;
    std::size_t length = 0;
    for (const std::string& command : file->commands) {
        promise(!command.empty() && command.find_first_of(" \n") == std::string::npos);
        length += command.size();
    }
    promise(length <= size);
    promise(!file->user || file->password);
    promise(!file->password || text.find(" password=" + *file->password) != std::string_view::npos);
    return 0;
}
