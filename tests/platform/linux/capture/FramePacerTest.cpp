#include "platform/linux/capture/FramePacer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace clipwren {

namespace {

using Nanoseconds = FramePacer::Nanoseconds;

constexpr Nanoseconds ms = 1'000'000;
constexpr Nanoseconds second = 1000 * ms;

struct Taken {
    int number; // the newest picture at that time
    Nanoseconds time;
};

// What is taken of pictures that are drawn at the given times, in their order, until `end`.
std::vector<Taken> takeFrames(FramePacer& pacer, const std::vector<Nanoseconds>& drawnAt, Nanoseconds end) {
    std::vector<Taken> frames;
    std::size_t next = 0;
    while (next < drawnAt.size()) {
        const Nanoseconds due = pacer.dueForChange(drawnAt[next]);
        if (due > end) break;
        while (next < drawnAt.size() && drawnAt[next] <= due)
            ++next;
        frames.push_back({static_cast<int>(next) - 1, due});
        pacer.took(due);
    }
    return frames;
}

std::vector<Nanoseconds> drawing(double fps, double jitter, Nanoseconds end, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> shift(-jitter, jitter);
    std::vector<Nanoseconds> times;
    for (int number = 0;; ++number) {
        const auto time =
            second + static_cast<Nanoseconds>((number / fps + (jitter > 0 ? shift(random) : 0)) * 1e9);
        if (time >= end) return times;
        times.push_back(time);
    }
}

Nanoseconds intervalOf(int fps) { return second / fps; }

} // namespace

TEST(FramePacer, TakesTheFirstChangeAsSoonAsItHasSettled) {
    FramePacer pacer(intervalOf(30));
    EXPECT_EQ(pacer.dueForChange(5 * second), 5 * second + 2 * ms);
    EXPECT_LT(pacer.dueForPointer(), 0);
}

TEST(FramePacer, TakesAChangeAfterARestAtOnce) {
    FramePacer pacer(intervalOf(10));
    pacer.took(1 * second);
    EXPECT_EQ(pacer.dueForChange(3 * second), 3 * second + 2 * ms);
    pacer.took(3 * second + 2 * ms);
    EXPECT_EQ(pacer.dueForChange(3 * second + 3 * ms), 3 * second + 52 * ms);
    EXPECT_EQ(pacer.dueForPointer(), 3 * second + 102 * ms);
}

TEST(FramePacer, TakesEachFrameOfASourceOfTheSameRateOnceAndWithoutDelay) {
    for (const int fps : {10, 15, 20, 24, 30})
        for (unsigned seed = 0; seed < 20; ++seed) {
            FramePacer pacer(intervalOf(fps));
            const auto drawn = drawing(fps, 0.24 / fps, 60 * second, seed);
            const auto frames = takeFrames(pacer, drawn, INT64_MAX);
            ASSERT_EQ(frames.size(), drawn.size()) << fps;
            for (std::size_t i = 0; i < frames.size(); ++i) {
                ASSERT_EQ(frames[i].number, static_cast<int>(i)) << fps;
                ASSERT_EQ(frames[i].time, drawn[i] + FramePacer::settleTime) << fps;
            }
        }
}

TEST(FramePacer, TakesAFasterSourceAtEvenDistancesAndExactlyTheRate) {
    for (const int fps : {10, 15, 20, 24, 30})
        for (const double source : {60.0, 144.0, 1000.0}) {
            FramePacer pacer(intervalOf(fps));
            const auto drawn = drawing(source, 0, 62 * second);
            auto frames = takeFrames(pacer, drawn, 61 * second);
            EXPECT_NEAR(static_cast<double>(frames.size()), 60.0 * fps, 1.5) << fps << " of " << source;
            // The first frame comes at once and may be early against the even ones.
            frames.erase(frames.begin(), frames.begin() + 2);
            for (std::size_t i = 1; i < frames.size(); ++i)
                EXPECT_NEAR(static_cast<double>(frames[i].time - frames[i - 1].time),
                            static_cast<double>(intervalOf(fps)), 1e9 / source)
                    << fps << " of " << source;
        }
}

TEST(FramePacer, NeverTakesMoreThanTheRateInTheLongRun) {
    FramePacer pacer(intervalOf(30));
    const auto frames = takeFrames(pacer, drawing(37, 0.012, 61 * second), INT64_MAX);
    EXPECT_LE(frames.size(), 60u * 30u + 2u);
    EXPECT_GE(frames.size(), 60u * 30u - 2u);
}

TEST(FramePacer, TakesASlowerSourceWhole) {
    FramePacer pacer(intervalOf(30));
    const auto drawn = drawing(11, 0.01, 60 * second);
    EXPECT_EQ(takeFrames(pacer, drawn, INT64_MAX).size(), drawn.size());
}

TEST(FramePacer, LooksInVainAtMostTwiceAnInterval) {
    FramePacer pacer(intervalOf(20));
    pacer.took(10 * second);
    pacer.looked(10 * second + 30 * ms);
    EXPECT_EQ(pacer.dueForChange(10 * second + 31 * ms), 10 * second + 55 * ms);
    // A look in vain takes no slot: the pointer's is still the one after the frame.
    pacer.looked(10 * second + 40 * ms);
    EXPECT_EQ(pacer.dueForPointer(), 10 * second + 90 * ms);
}

TEST(FramePacer, LeavesTheSlotOfARegularSourceToItsFrames) {
    FramePacer pacer(intervalOf(15));
    Nanoseconds drawn = 2 * second;
    for (int i = 0; i < 1000; ++i) {
        const Nanoseconds due = pacer.dueForChange(drawn);
        EXPECT_EQ(due, drawn + FramePacer::settleTime);
        pacer.took(due);
        drawn += intervalOf(15);
        EXPECT_GE(pacer.dueForPointer(), drawn);
    }
}

} // namespace clipwren
