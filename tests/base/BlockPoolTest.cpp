#include "base/BlockPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace clipwren {

TEST(BlockPool, GivesPiecesThatDoNotOverlap) {
    BlockPool pool(4160);
    std::vector<unsigned char*> pieces;
    for (int i = 0; i < 2000; ++i) {
        pieces.push_back(static_cast<unsigned char*>(pool.take()));
        std::memset(pieces.back(), i % 251, 4160);
    }
    for (int i = 0; i < 2000; ++i)
        EXPECT_TRUE(std::all_of(pieces[static_cast<std::size_t>(i)],
                                pieces[static_cast<std::size_t>(i)] + 4160,
                                [&](unsigned char byte) { return byte == i % 251; }));
    for (auto* piece : pieces)
        pool.giveBack(piece);
}

TEST(BlockPool, TakesMemoryInChunksAndGivesItBack) {
    BlockPool pool(4160);
    EXPECT_EQ(pool.byteCount(), 0u);
    std::vector<void*> pieces{pool.take()};
    const std::size_t chunk = pool.byteCount();
    EXPECT_GE(chunk, 4160u);
    while (pool.byteCount() < chunk * 5)
        pieces.push_back(pool.take());
    EXPECT_LT(chunk * 4 - (pieces.size() - 1) * 4160, 4u * 4160u);
    std::shuffle(pieces.begin(), pieces.end(), std::mt19937(1));
    for (void* piece : pieces)
        pool.giveBack(piece);
    EXPECT_EQ(pool.byteCount(), chunk);
}

TEST(BlockPool, GivesTheLastChunkBackWhenAskedTo) {
    BlockPool pool(4160);
    pool.releaseSpare();
    void* piece = pool.take();
    pool.releaseSpare();
    EXPECT_GT(pool.byteCount(), 0u);
    pool.giveBack(piece);
    EXPECT_GT(pool.byteCount(), 0u);
    pool.releaseSpare();
    EXPECT_EQ(pool.byteCount(), 0u);
    pool.giveBack(pool.take());
    EXPECT_GT(pool.byteCount(), 0u);

    static BlockPool& lasting = BlockPool::makeLasting(4160);
    lasting.giveBack(lasting.take());
    EXPECT_GT(lasting.byteCount(), 0u);
    BlockPool::releaseSpares();
    EXPECT_EQ(lasting.byteCount(), 0u);
}

TEST(BlockPool, UsesPiecesAgain) {
    BlockPool pool(128);
    std::set<void*> first;
    for (int i = 0; i < 100; ++i)
        first.insert(pool.take());
    for (void* piece : first)
        pool.giveBack(piece);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(first.count(pool.take()), 1u);
}

TEST(BlockPool, TakesChunksFromItsSourceAndGivesThemBackThere) {
    static std::size_t held = 0;
    static int only = 0;
    static const BlockPool::Source counting{[](std::size_t size, bool isOnly) {
                                                held += size;
                                                only += isOnly;
                                                return ::operator new(size, std::align_val_t{size});
                                            },
                                            [](void* memory, std::size_t size) {
                                                held -= size;
                                                ::operator delete(memory, std::align_val_t{size});
                                            }};
    static const BlockPool::Source none{[](std::size_t, bool) -> void* { return nullptr; }, nullptr};
    {
        BlockPool pool(4160);
        BlockPool::setSource(counting);
        std::vector<void*> pieces;
        for (int i = 0; i < 1500; ++i)
            pieces.push_back(pool.take());
        EXPECT_EQ(only, 1);
        EXPECT_EQ(held, pool.byteCount());
        BlockPool::setSource(none);
        EXPECT_THROW(for (int i = 0; i < 600; ++i) pieces.push_back(pool.take()), std::bad_alloc);
        EXPECT_EQ(held, pool.byteCount());
        for (void* piece : pieces)
            pool.giveBack(piece);
        EXPECT_EQ(held, pool.byteCount());
    }
    EXPECT_EQ(held, 0u);
    // Back to the library's memory, for the other tests.
    static const BlockPool::Source library{
        [](std::size_t size, bool) { return ::operator new(size, std::align_val_t{size}); },
        [](void* memory, std::size_t size) { ::operator delete(memory, std::align_val_t{size}); }};
    BlockPool::setSource(library);
}

TEST(BlockPool, MayBeUsedByManyThreads) {
    BlockPool pool(4160);
    const auto work = [&](unsigned seed) {
        std::mt19937 random(seed);
        std::vector<unsigned*> held;
        for (int i = 0; i < 20'000; ++i) {
            if (held.size() < 700 && random() % 2 == 0) {
                held.push_back(static_cast<unsigned*>(pool.take()));
                *held.back() = seed;
            } else if (!held.empty()) {
                std::swap(held[random() % held.size()], held.back());
                ASSERT_EQ(*held.back(), seed);
                pool.giveBack(held.back());
                held.pop_back();
            }
        }
        for (auto* piece : held)
            pool.giveBack(piece);
    };
    std::thread one([&] { work(1); }), two([&] { work(2); }), three([&] { work(3); });
    one.join();
    two.join();
    three.join();
}

} // namespace clipwren
