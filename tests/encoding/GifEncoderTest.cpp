#include "encoding/GifEncoder.h"

#include "encoding/Watermark.h"
#include "tests/fakes/FakeCanvas.h"
#include "tests/fakes/FakeFiles.h"
#include "tests/fakes/FakeFolders.h"
#include "tests/support/DecodedGif.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <fstream>

namespace clipwren {
namespace {

namespace fs = std::filesystem;

class GifEncoderTest : public testing::Test {
protected:
    GifEncoderTest() {
        folders.picturesFolder = folder.path() / "Pictures";
        folders.homeFolder = folder.path();
    }

    static RecordedFrame frame(std::int64_t milliseconds, Pixel color = 0xFF4060A0) {
        return {TestPicture(300, 200, color).image(), {milliseconds, 1000}};
    }

    DecodedGif encoded(const std::vector<RecordedFrame>& frames) {
        const auto path = GifEncoder::encode(frames, folders, files, canvases);
        EXPECT_TRUE(path);
        return path ? DecodedGif::read(*path) : DecodedGif{};
    }

    static std::vector<int> delays(const DecodedGif& gif) {
        std::vector<int> result;
        for (const DecodedGifFrame& frame : gif.frames)
            result.push_back(frame.hundredths);
        return result;
    }

    TemporaryFolder folder;
    FakeFiles files;
    FakeFolders folders;
    FakeCanvases canvases;
};

TEST_F(GifEncoderTest, NoFramesLeaveNoTrace) {
    const auto result = GifEncoder::encode({}, folders, files, canvases);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), GifEncoderError::noFrames);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(GifEncoderTest, TheFileIsNamedByTheLocalTime) {
    const auto path = GifEncoder::encode(std::vector{frame(0)}, folders, files, canvases);
    ASSERT_TRUE(path);
    EXPECT_EQ(*path, folder.path() / "Pictures" / "Clipwren" / "Recording_2024-03-09_14-05-31.gif");
    EXPECT_TRUE(fs::is_regular_file(*path));
}

TEST_F(GifEncoderTest, TellsTheShareOfFramesWritten) {
    std::vector<RecordedFrame> frames;
    for (int i = 0; i < 8; ++i)
        frames.push_back(frame(i * 100));
    std::vector<double> shares;
    ASSERT_TRUE(
        GifEncoder::encode(frames, folders, files, canvases, [&](double share) { shares.push_back(share); }));
    ASSERT_EQ(shares.size(), 8u);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_DOUBLE_EQ(shares[i], static_cast<double>(i + 1) / 8);
}

TEST_F(GifEncoderTest, LoopsForEver) {
    const DecodedGif gif = encoded({frame(0), frame(100)});
    EXPECT_EQ(gif.error, "");
    EXPECT_EQ(gif.loopCount, 0);
    EXPECT_EQ(gif.size, (PixelSize{300, 200}));
}

TEST_F(GifEncoderTest, ASingleFrameLastsAFifteenthOfASecond) {
    EXPECT_EQ(delays(encoded({frame(0)})), (std::vector{7}));
}

TEST_F(GifEncoderTest, DelaysFollowTheTimes) {
    EXPECT_EQ(delays(encoded({frame(0), frame(100), frame(250)})), (std::vector{10, 15, 7}));
    EXPECT_EQ(delays(encoded({frame(0), frame(10), frame(20)})), (std::vector{2, 2, 7}));
    EXPECT_EQ(delays(encoded({frame(500), frame(500)})), (std::vector{7, 6}));
    EXPECT_EQ(delays(encoded({frame(500), frame(400)})), (std::vector{7, 6}));
    RecordedFrame invalid = frame(0);
    invalid.presentationTime = {};
    EXPECT_EQ(delays(encoded({frame(0), invalid, frame(400)})), (std::vector{7, 6, 7}));
}

TEST_F(GifEncoderTest, EveryFrameIsStampedInItsPhase) {
    const std::vector<RecordedFrame> frames{frame(0), frame(250), frame(3'750), frame(4'000, 0xFFEEEEEE)};
    const DecodedGif gif = encoded(frames);
    ASSERT_EQ(gif.frames.size(), 4u);
    const std::vector<double> phases{0, 0.25, 0.75, 0};
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const auto expected = applyWatermark(frames[i].image.unpacked(), phases[i], canvases);
        std::vector<Pixel> pixels(300 * 200);
        expected->copy(expected->bounds(), pixels.data(), 300);
        for (Pixel& pixel : pixels)
            pixel &= 0xFFFFFF;
        EXPECT_EQ(gif.frames[i].shown, pixels) << "frame " << i;
    }
}

TEST_F(GifEncoderTest, AFrameThatCannotBeStampedIsWrittenAsItIs) {
    canvases.refuses = true;
    const DecodedGif gif = encoded({frame(0)});
    ASSERT_EQ(gif.frames.size(), 1u);
    EXPECT_EQ(gif.frames[0].shown, std::vector<Pixel>(300 * 200, 0x4060A0));
}

TEST_F(GifEncoderTest, TheSameSecondMeansTheSameFile) {
    const auto first = GifEncoder::encode(std::vector{frame(0), frame(100)}, folders, files, canvases);
    const auto second = GifEncoder::encode(std::vector{frame(0)}, folders, files, canvases);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(*first, *second);
    EXPECT_EQ(DecodedGif::read(*second).frames.size(), 1u);
}

TEST_F(GifEncoderTest, AFolderInTheWayIsADestinationFailure) {
    fs::create_directories(folder.path() / "Pictures" / "Clipwren" / "Recording_2024-03-09_14-05-31.gif");
    const auto result = GifEncoder::encode(std::vector{frame(0)}, folders, files, canvases);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), GifEncoderError::destinationFailure);
}

TEST_F(GifEncoderTest, AFileInPlaceOfTheFolderIsADestinationFailure) {
    fs::create_directories(folder.path() / "Pictures");
    std::ofstream(folder.path() / "Pictures" / "Clipwren") << "in the way";
    const auto result = GifEncoder::encode(std::vector{frame(0)}, folders, files, canvases);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), GifEncoderError::destinationFailure);
}

TEST_F(GifEncoderTest, AFullDiskIsAFinalizeFailure) {
    files.faultyOperation = 2;
    files.fault = FakeFiles::Fault::forGood;
    const auto result = GifEncoder::encode(std::vector{frame(0)}, folders, files, canvases);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), GifEncoderError::finalizeFailure);
}

TEST_F(GifEncoderTest, LookingForAbandonedRecordingsMakesNoFolder) {
    GifEncoder::removeAbandonedRecordings(folders, files);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(GifEncoderErrors, DescribeThemselves) {
    EXPECT_EQ(errorDescription(GifEncoderError::noFrames), "No frames were captured.");
    EXPECT_EQ(errorDescription(GifEncoderError::destinationFailure), "Could not create GIF destination.");
    EXPECT_EQ(errorDescription(GifEncoderError::finalizeFailure), "Could not finalize GIF.");
}

} // namespace
} // namespace clipwren
