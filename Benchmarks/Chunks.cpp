#include "Benchmarks/Chunks.h"

#include <cups/http.h>
#include <zlib.h>

#include <array>
#include <cstddef>

namespace orvan {

std::vector<std::string> chunksOf(const std::string& block) {
    constexpr std::size_t kPieceSize = 158;
    std::string stream(compressBound(block.size()), '\0');
    uLongf size = stream.size();
    if (compress2(reinterpret_cast<Bytef*>(stream.data()), &size,
            reinterpret_cast<const Bytef*>(block.data()), block.size(), Z_BEST_COMPRESSION) != Z_OK)
        return {};
    stream.resize(size);
    std::vector<std::string> chunks;
    for (std::size_t at = 0; at < stream.size(); at += kPieceSize) {
        const std::string piece = stream.substr(at, kPieceSize);
        std::array<char, 2 * kPieceSize> encoded{};
        chunks.emplace_back(httpEncode64_2(
            encoded.data(), static_cast<int>(encoded.size()), piece.data(), static_cast<int>(piece.size())));
    }
    return chunks;
}

} // namespace orvan
