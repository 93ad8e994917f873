// Gives every file of a fuzz target's corpus to the target.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

TEST(FuzzCorpus, everyInputKeepsThePromises) {
    std::size_t count = 0;
    for (const auto& file : std::filesystem::directory_iterator(ORVAN_CORPUS)) {
        SCOPED_TRACE(file.path().string());
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        // A copy of exactly this size, so that a read past its end is seen.
        const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
        EXPECT_EQ(LLVMFuzzerTestOneInput(exact.data(), exact.size()), 0);
        ++count;
    }
    EXPECT_GT(count, 0U) << "no inputs in " << ORVAN_CORPUS;
}
