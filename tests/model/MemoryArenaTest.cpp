#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include "model/MemoryArena.h"

namespace quillet::test {

namespace {

TEST(MemoryArena, PiecesAreAlignedAndDoNotOverlap) {
    platform::MemoryArena arena;
    std::vector<std::pair<unsigned char*, std::size_t>> pieces;
    const std::size_t sizes[] = {1, 7, 64, 5000, platform::MemoryArena::kLargestRegion + 1};
    for (std::size_t i = 0; i < 3000; ++i) {
        const std::size_t size = i % 500 == 4 ? sizes[4] : sizes[i % 4];
        const std::size_t alignment = std::size_t{1} << (i % 4);
        auto* piece = static_cast<unsigned char*>(arena.allocate(size, alignment));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % alignment, 0U);
        std::memset(piece, static_cast<int>(i % 251), size);
        pieces.emplace_back(piece, size);
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto [piece, size] = pieces[i];
        ASSERT_EQ(piece[0], i % 251);
        ASSERT_EQ(piece[size - 1], i % 251);
    }
}

}  // namespace

}  // namespace quillet::test
