#include "base/BlockPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
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

TEST(BlockPool, TellsOfEachChunkButItsOnlyOne) {
    static std::size_t advised = 0;
    BlockPool::setChunkAdvice([](void*, std::size_t size) { advised += size; });
    BlockPool pool(4160);
    std::vector<void*> pieces{pool.take()};
    const std::size_t chunk = pool.byteCount();
    EXPECT_EQ(advised, 0u);
    for (int i = 0; i < 1500; ++i)
        pieces.push_back(pool.take());
    BlockPool::setChunkAdvice(nullptr);
    EXPECT_GT(advised, chunk);
    EXPECT_EQ(advised, pool.byteCount() - chunk);
    for (void* piece : pieces)
        pool.giveBack(piece);
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
