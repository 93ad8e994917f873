// Chunks of any content: the reader ends, gives no more than the format allows, and asks for no entry twice.
// What it gave is written and read back unchanged.
//
// The input's lines are the values of the chunks 0, 1, 2, ...
#include "BiDi/ppdx.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace {

void promise(bool kept) {
    if (!kept) std::abort();
}

struct Source {
    std::vector<std::string> values;
    std::size_t next = 0;

    static const char* get(void* opaque, const char* keyword) {
        auto& source = *static_cast<Source*>(opaque);
        promise(std::strtoul(keyword + 1, nullptr, 16) == source.next);
        const std::size_t number = source.next++;
        return number < source.values.size() ? source.values[number].c_str() : nullptr;
    }
};

Source split(std::string_view text) {
    Source source;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);)
        source.values.push_back(line);
    return source;
}

// The values of the lines that the writer makes of a block.
Source written(const char* bytes, std::size_t size) {
    const int file = ::memfd_create("lines", MFD_CLOEXEC);
    promise(file >= 0 && orvan::ppdxWriteDataToDescriptor(file, "N", bytes, size));
    std::string lines(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
    promise(::pread(file, lines.data(), lines.size(), 0) == static_cast<ssize_t>(lines.size()));
    ::close(file);
    Source source;
    std::istringstream pieces(lines);
    for (std::string piece; pieces >> piece;)
        if (const auto equals = piece.find('='); equals != std::string::npos)
            source.values.push_back(piece.substr(equals + 1));
    return source;
}

// One message a damaged chunk would drown the fuzzer's own.
const bool kIsQuiet = std::freopen("/dev/null", "w", stderr) != nullptr;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static_cast<void>(kIsQuiet);
    Source source = split({reinterpret_cast<const char*>(data), size});
    std::size_t count = 1;
    const orvan::PpdxData bytes = orvan::ppdxReadData(&source, "N", Source::get, &count);
    promise((bytes != nullptr) == !source.values.empty());
    if (bytes == nullptr) return 0;
    promise(count <= orvan::kPpdxMaximumSize && bytes.get()[count] == '\0');
    if (count > 100000) return 0;

    Source copy = written(bytes.get(), count);
    std::size_t copied = 0;
    const orvan::PpdxData again = orvan::ppdxReadData(&copy, "N", Source::get, &copied);
    promise(copied == count && std::memcmp(again.get(), bytes.get(), count) == 0);
    return 0;
}
