#include "platform/linux/LargePages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace clipwren {

TEST(LargePages, AreAlignedAndWritable) {
    constexpr std::size_t size = std::size_t{1} << 21;
    const BlockPool::Source source = largePages();
    std::vector<void*> chunks;
    for (int i = 0; i < 20; ++i) {
        chunks.push_back(source.take(size, i == 0));
        ASSERT_NE(chunks.back(), nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(chunks.back()) % size, 0u);
        std::memset(chunks.back(), i, size);
    }
    for (int i = 0; i < 20; ++i) {
        const auto* bytes = static_cast<unsigned char*>(chunks[static_cast<std::size_t>(i)]);
        EXPECT_EQ(bytes[0], i);
        EXPECT_EQ(bytes[size - 1], i);
    }
    for (void* chunk : chunks)
        source.giveBack(chunk, size);
}

TEST(LargePages, TellWhenThereAreNone) { EXPECT_EQ(largePages().take(std::size_t{1} << 60, false), nullptr); }

} // namespace clipwren
