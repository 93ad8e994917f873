// Chunks of the ppdx encoding in memory, without names to look up.
#pragma once

#include <string>
#include <vector>

namespace orvan {

// The values of a block's chunks, without the terminator; empty when it could not be encoded.
std::vector<std::string> chunksOf(const std::string& block);

// A source of ppdxReadData that answers the values in their order.
class ChunkSource {
public:
    // The values must outlive it.
    explicit ChunkSource(const std::vector<std::string>& chunks) : chunks_(chunks) {}

    static const char* next(void* source, const char*) {
        auto& self = *static_cast<ChunkSource*>(source);
        return self.next_ < self.chunks_.size() ? self.chunks_[self.next_++].c_str() : nullptr;
    }

private:
    const std::vector<std::string>& chunks_;
    std::size_t next_ = 0;
};

} // namespace orvan
