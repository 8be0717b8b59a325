#include "capture/FrameStore.h"

#include "tests/fakes/FakePlatform.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <limits>

namespace clipwren {
namespace {

class FrameStoreTest : public testing::Test {
protected:
    FakePlatform platform;
    std::shared_ptr<CaptureStream> stream = platform.screenCapture.makeStream({}, {}, {});
    int shortages = 0;
    bool isBehind = false;
    FrameStore store{MemoryWatch(platform.memory, [this] { ++shortages; }), [this] { return isBehind; }};

    static StreamSample complete(MediaTime time) {
        return {.isValid = true, .status = 0, .image = plainImage(640, 360), .presentationTime = time};
    }
    void offer(const StreamSample& sample, StreamOutputType type = StreamOutputType::screen) {
        store.didOutputSample(*stream, sample, type);
    }
};

TEST_F(FrameStoreTest, TheFirstFrameHasTheZeroTimeAndTheOthersTheirDistanceFromIt) {
    offer(complete({1000, 15}));
    offer(complete({1001, 15}));
    const auto frames = store.take();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].presentationTime, MediaTime::zero());
    EXPECT_EQ(frames[1].presentationTime, (MediaTime{1, 15}));
}

TEST_F(FrameStoreTest, OnlyCompleteFramesAreKeptAndOnlyTheySetTheStart) {
    for (const int status : {1, 2, 3, 4, 5, 17}) {
        auto sample = complete({900, 15});
        sample.status = status;
        offer(sample);
    }
    auto withoutStatus = complete({901, 15});
    withoutStatus.status.reset();
    offer(withoutStatus);
    auto invalid = complete({902, 15});
    invalid.isValid = false;
    offer(invalid);
    EXPECT_EQ(store.byteCount(), 0);
    offer(complete({903, 15}));
    const auto frames = store.take();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].presentationTime, MediaTime::zero());
}

TEST_F(FrameStoreTest, AFrameWithoutPictureChangesNothing) {
    auto withoutPicture = complete({10, 15});
    withoutPicture.image.reset();
    offer(withoutPicture);
    EXPECT_EQ(store.byteCount(), 0);
    offer(complete({12, 15}));
    EXPECT_EQ(store.take().front().presentationTime, MediaTime::zero());
}

TEST_F(FrameStoreTest, OtherOutputsThanTheScreenAreIgnored) {
    offer(complete({10, 15}), StreamOutputType::audio);
    offer(complete({10, 15}), static_cast<StreamOutputType>(7));
    EXPECT_TRUE(store.take().empty());
}

TEST_F(FrameStoreTest, TheByteCountIsNominal) {
    const Image image = plainImage(640, 360);
    for (int i = 0; i < 3; ++i)
        offer(
            {.isValid = true, .status = 0, .image = image, .presentationTime = {i, 15}}); // all blocks shared
    EXPECT_EQ(store.byteCount(), 2'764'800);
}

TEST_F(FrameStoreTest, HandsOutThePicturesThatItWasGiven) {
    for (const bool packs : {true, false}) {
        isBehind = !packs;
        std::vector<Image> images{plainImage(640, 360)};
        for (int i = 1; i < 4; ++i) {
            const std::vector<Pixel> fresh(100, 0xFF102030 * static_cast<Pixel>(i));
            const Image::Patch patch{{100 * i, 50, 10, 10}, fresh.data(), 10};
            images.push_back(images.back().replacing({&patch, 1}));
        }
        for (const Image& image : images)
            offer({.isValid = true, .status = 0, .image = image});
        EXPECT_EQ(store.byteCount(), 4 * 640 * 360 * 4);
        const auto frames = store.take();
        ImageUnpacker unpacker;
        ASSERT_EQ(frames.size(), 4u);
        std::optional<Image> before;
        for (std::size_t i = 0; i < 4; ++i) {
            const Image image = frames[i].image.unpacked(unpacker);
            EXPECT_EQ(pixelsOf(image), pixelsOf(images[i]));
            if (before) {
                EXPECT_EQ(image.blocksDiffering(*before).size(), 1u) << "sharing is lost";
            }
            before = image;
        }
    }
}

TEST_F(FrameStoreTest, LetsGoOfThePlainPictureInALongRest) {
    const auto idleAt = [](std::int64_t seconds) {
        return StreamSample{.isValid = true, .status = 1, .presentationTime = {seconds, 1}};
    };
    std::weak_ptr<const Image::Block> block;
    const auto pictureAt = [&](std::int64_t seconds) {
        // Made anew each time: no two share a block.
        Image image = plainImage(640, 360);
        block = image.allRows().front()->front();
        return StreamSample{
            .isValid = true, .status = 0, .image = std::move(image), .presentationTime = {seconds, 1}};
    };
    offer(idleAt(0));
    offer(pictureAt(1));
    offer(idleAt(3));
    EXPECT_FALSE(block.expired());
    offer(idleAt(11));
    EXPECT_TRUE(block.expired());
    // The next one is kept as ever, and shares what is the same.
    offer(pictureAt(12));
    EXPECT_FALSE(block.expired());
    const auto frames = store.take();
    ASSERT_EQ(frames.size(), 2u);
    ImageUnpacker unpacker;
    const Image first = frames[0].image.unpacked(unpacker), second = frames[1].image.unpacked(unpacker);
    EXPECT_TRUE(second.blocksDiffering(first).empty());
    EXPECT_EQ(pixelsOf(second), pixelsOf(plainImage(640, 360)));
    EXPECT_EQ(frames[1].presentationTime, (MediaTime{11, 1}));
}

TEST_F(FrameStoreTest, ReportsShortMemoryOnceAndGoesOn) {
    platform.memory.left = memoryReserve({640, 360}) - 1;
    for (int i = 0; i < 3; ++i)
        offer(complete({100 * i, 15}));
    EXPECT_EQ(shortages, 1);
    EXPECT_EQ(store.take().size(), 3u);
}

TEST_F(FrameStoreTest, TakingEmptiesTheStoreAndStartsAfresh) {
    offer(complete({10, 15}));
    EXPECT_EQ(store.take().size(), 1u);
    EXPECT_EQ(store.byteCount(), 0);
    EXPECT_TRUE(store.take().empty());
    offer(complete({40, 15}));
    EXPECT_EQ(store.take().front().presentationTime, MediaTime::zero());
}

} // namespace
} // namespace clipwren
