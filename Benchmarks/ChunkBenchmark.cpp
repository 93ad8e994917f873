// The ppdx encoding, beside the library calls that it cannot do without.
#include "Benchmarks/Chunks.h"
#include "Benchmarks/Paired.h"
#include "Benchmarks/SampleData.h"
#include "BiDi/ResponseEntries.h"
#include "BiDi/ppdx.h"

#include <benchmark/benchmark.h>
#include <cups/http.h>
#include <cups/ppd.h>
#include <zlib.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace orvan {
namespace {

constexpr std::size_t kKibibyte = 1024;
constexpr std::size_t kPieceSize = 158;
// The space that an encoded and a decoded piece take, the zero byte of libcups included.
constexpr int kEncodedSize = 212;
constexpr int kDecodedSize = kPieceSize + 1;

std::string textOf(std::size_t size) {
    return responseDocument(size).substr(0, size);
}

// Answers whether all was compressed.
bool encodeBare(const std::string& block) {
    z_stream stream{};
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(block.data()));
    stream.avail_in = static_cast<uInt>(block.size());
    if (deflateInit(&stream, Z_BEST_COMPRESSION) != Z_OK) return false;
    std::array<Bytef, kPieceSize> piece;
    std::array<char, kEncodedSize> encoded;
    int code = Z_OK;
    while (code == Z_OK) {
        stream.next_out = piece.data();
        stream.avail_out = kPieceSize;
        code = deflate(&stream, Z_FINISH);
        httpEncode64_2(encoded.data(), kEncodedSize, reinterpret_cast<const char*>(piece.data()),
            static_cast<int>(kPieceSize - stream.avail_out));
        benchmark::DoNotOptimize(encoded);
    }
    deflateEnd(&stream);
    return code == Z_STREAM_END;
}

void writeChunks(benchmark::State& state, std::string (*contents)(std::size_t)) {
    const std::string block = contents(static_cast<std::size_t>(state.range(0)) * kKibibyte);
    const int discarded = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    measurePaired(
        state, [&] { return ppdxWriteDataToDescriptor(discarded, "Status", block.data(), block.size()); },
        [&] { return encodeBare(block); });
    ::close(discarded);
}
BENCHMARK_CAPTURE(writeChunks, text, textOf)->Arg(64)->Arg(1024)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeChunks, random, randomBytes)->Arg(64)->Arg(1024)->Unit(benchmark::kMillisecond);

// Into a buffer that has the right size from the start.
bool decodeBare(const std::vector<std::string>& chunks, std::vector<char>& block) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) return false;
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = static_cast<uInt>(block.size());
    int code = Z_OK;
    for (const std::string& chunk : chunks) {
        std::array<char, kDecodedSize> piece;
        int count = kDecodedSize;
        httpDecode64_2(piece.data(), &count, chunk.c_str());
        stream.next_in = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_in = static_cast<uInt>(count);
        code = inflate(&stream, Z_NO_FLUSH);
    }
    inflateEnd(&stream);
    return code == Z_STREAM_END && stream.total_out == block.size();
}

void readChunks(benchmark::State& state, std::string (*contents)(std::size_t)) {
    const std::string block = contents(static_cast<std::size_t>(state.range(0)) * kKibibyte);
    const std::vector<std::string> chunks = chunksOf(block);
    std::vector<char> buffer(block.size());
    measurePaired(
        state,
        [&] {
            ChunkSource source(chunks);
            std::size_t size = 0;
            const PpdxData read = ppdxReadData(&source, "Status", ChunkSource::next, &size);
            return read != nullptr && size == block.size();
        },
        [&] { return decodeBare(chunks, buffer); });
    if (!std::equal(buffer.begin(), buffer.end(), block.begin(), block.end()))
        state.SkipWithError("the bytes are wrong");
}
BENCHMARK_CAPTURE(readChunks, text, textOf)->Arg(64)->Arg(1024)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readChunks, random, randomBytes)->Arg(64)->Arg(1024)->Unit(benchmark::kMillisecond);

struct ClosePPD {
    void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};

// A block whose chunks are the attributes of an open PPD.
class BlockInPPD {
public:
    explicit BlockInPPD(std::size_t chunkCount) : size_((chunkCount - 2) * kPieceSize) {
        const std::vector<std::string> chunks = chunksOf(randomBytes(size_));
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
        if (file == nullptr) return;
        std::fputs("*PPD-Adobe: \"4.3\"\n", file.get());
        for (std::size_t i = 0; i < chunks.size(); ++i)
            std::fprintf(file.get(), "*Status%04zx: \"%s\"\n", i, chunks[i].c_str());
        std::rewind(file.get());
        ppd_.reset(ppdOpen(file.get()));
    }

    bool isOpen() const { return ppd_ != nullptr; }
    bool read() const {
        std::size_t size = 0;
        const PpdxData block = ppdxReadData(ppd_.get(), "Status", ppdx_get_chunk_ppd, &size);
        return block != nullptr && size == size_;
    }

private:
    std::size_t size_;
    std::unique_ptr<ppd_file_t, ClosePPD> ppd_;
};

// The many as "ours", a tenth of them as "peer".
void readFromPPD(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const BlockInPPD many(count);
    const BlockInPPD few(count / 10);
    if (!many.isOpen() || !few.isOpen()) return state.SkipWithError("the PPD was refused");
    measurePaired(
        state, [&] { return many.read(); }, [&] { return few.read(); });
}
BENCHMARK(readFromPPD)->Arg(100'000)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace orvan
