// The entries in a command filter's output, beside the least that can be done with as many bytes.
#include "Benchmarks/Chunks.h"
#include "Benchmarks/Paired.h"
#include "Benchmarks/SampleData.h"
#include "BiDi/ResponseEntries.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace orvan {
namespace {

constexpr std::size_t kOutputSize = std::size_t{16} << 20U;
constexpr std::size_t kEntriesALine = 8;

// As the writer lays it out, and what filters say beside that. `entries` is how many it has.
std::string filterOutput(std::size_t* entries) {
    const std::vector<std::string> chunks = chunksOf(randomBytes(kOutputSize * 3 / 4));
    std::string output;
    output.reserve(kOutputSize + 4096);
    std::size_t count = 0;
    while (output.size() < kOutputSize && count < chunks.size()) {
        output += "DEBUG: answer received\nPPD:";
        for (std::size_t i = 0; i < kEntriesALine && count < chunks.size(); ++i, ++count) {
            char number[24];
            std::snprintf(number, sizeof number, "%04zx=", count);
            output += " com.orvan.DeviceStatus";
            output += number;
            output += chunks[count];
        }
        output += '\n';
    }
    *entries = count;
    return output;
}

std::size_t countLines(const std::string& text) {
    std::size_t lines = 0;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != nullptr && at < end; ++lines) {
        at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
        if (at != nullptr) ++at;
    }
    return lines;
}

void findEntries(benchmark::State& state) {
    std::size_t entries = 0;
    const std::string output = filterOutput(&entries);
    if (output.size() < kOutputSize) return state.SkipWithError("the output is too short");
    measurePaired(
        state, [&] { return entriesInTaskOutput(output).size() == entries; },
        [&] {
            // The copy is what is measured. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
            const std::string copy(output);
            return countLines(copy) == 2 * entries / kEntriesALine;
        });
}
BENCHMARK(findEntries)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orvan
