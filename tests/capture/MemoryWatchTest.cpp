#include "capture/MemoryWatch.h"

#include "tests/fakes/FakeServices.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

constexpr std::int64_t megabyte = 1 << 20;
constexpr PixelSize size{800, 450};

struct Subject {
    FakeMemory memory;
    int reports = 0;
    MemoryWatch watch{memory, [this] { ++reports; }};

    void keep(std::int64_t bytes, std::int64_t milliseconds) {
        watch.kept(size, bytes, {milliseconds, 1000});
    }
};

TEST(MemoryWatch, ReservesMoreForLargerFrames) {
    EXPECT_EQ(memoryReserve({800, 450}), 168'777'728);
    EXPECT_EQ(memoryReserve({1600, 900}), 272'457'728);
}

TEST(MemoryWatch, ReportsOnceWhenLessThanTheReserveIsLeft) {
    Subject subject;
    subject.memory.left = memoryReserve(size);
    subject.keep(5 * megabyte, 0);
    EXPECT_EQ(subject.reports, 0);
    subject.memory.left = memoryReserve(size) - 1;
    for (int i = 1; i < 5; ++i)
        subject.keep(5 * megabyte, i);
    EXPECT_EQ(subject.reports, 1);
}

TEST(MemoryWatch, LooksAtTheFirstFrameAndThenAfterMegabytesOrSeconds) {
    Subject subject;
    subject.keep(1, 0);
    EXPECT_EQ(subject.memory.questions, 1);
    for (int i = 0; i < 3; ++i)
        subject.keep(megabyte, 10 * i);
    EXPECT_EQ(subject.memory.questions, 1);
    subject.keep(megabyte, 40);
    EXPECT_EQ(subject.memory.questions, 2);
    subject.keep(1, 2030);
    EXPECT_EQ(subject.memory.questions, 2);
    subject.keep(1, 2050);
    EXPECT_EQ(subject.memory.questions, 3);
}

TEST(MemoryWatch, ReportsNothingWhereNothingIsKnown) {
    Subject subject;
    subject.memory.isKnown = false;
    subject.keep(100 * megabyte, 0);
    EXPECT_EQ(subject.reports, 0);
    subject.watch.ranOut();
    subject.watch.ranOut();
    EXPECT_EQ(subject.reports, 1);
}

} // namespace
} // namespace clipwren
