// reading-memory: reads a block of 16 MiB whose chunks take next to no memory themselves, and prints the
// block's size and by how many bytes the process's peak of resident memory rose meanwhile, as JSON.
#include "Benchmarks/Chunks.h"
#include "BiDi/ppdx.h"

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kBlockSize = orvan::kPpdxMaximumSize;

// The peak of the resident memory of this process, in bytes.
std::optional<std::size_t> peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t kibibytes = 0;
        if (word == "VmHWM:" && status >> kibibytes) return kibibytes * 1024;
    }
    return std::nullopt;
}

// Makes the present memory the peak, as making the chunks took more.
bool resetPeak() {
    std::ofstream clear("/proc/self/clear_refs");
    return static_cast<bool>(clear << "5" << std::flush);
}

} // namespace

int main() {
    const std::vector<std::string> chunks = orvan::chunksOf(std::string(kBlockSize, '\0'));
    const bool isReset = resetPeak();
    const auto before = peakMemory();
    orvan::ChunkSource source(chunks);
    std::size_t size = 0;
    const orvan::PpdxData block = orvan::ppdxReadData(&source, "Status", orvan::ChunkSource::next, &size);
    const auto after = peakMemory();
    if (!isReset || !before || !after || block == nullptr || size != kBlockSize) {
        std::cerr << "reading-memory: the block was not read or the system does not tell the peak\n";
        return EXIT_FAILURE;
    }
    std::cout << "{\"block\": " << size << ", \"peak\": " << *after - *before << "}\n";
    return EXIT_SUCCESS;
}
