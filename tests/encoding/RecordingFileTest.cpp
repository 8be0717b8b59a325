#include "encoding/RecordingFile.h"

#include "encoding/GifEncoder.h"
#include "tests/fakes/FakeCanvas.h"
#include "tests/fakes/FakeFiles.h"
#include "tests/fakes/FakeFolders.h"
#include "tests/support/DecodedGif.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <random>

namespace clipwren {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::uint8_t, 2> hi{'h', 'i'};

class RecordingFileTest : public testing::Test {
protected:
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : fs::directory_iterator(folder.path()))
            result.push_back(entry.path().filename().string());
        return result;
    }

    TemporaryFolder folder;
    fs::path path = folder.path() / "file.gif";
    FakeFiles files;
};

TEST_F(RecordingFileTest, HasItsNameOnlyAtTheEnd) {
    const auto file = RecordingFile::create(files, path);
    ASSERT_TRUE(file);
    std::string expected;
    for (const std::size_t size : {1u, 0u, 300u, 70'000u, 600'000u, 3u}) {
        const std::vector<std::uint8_t> part(size, static_cast<std::uint8_t>(size));
        file->write(part);
        expected.append(part.begin(), part.end());
        ASSERT_EQ(names().size(), 1u);
        EXPECT_TRUE(names()[0].starts_with(".")) << names()[0];
    }
    EXPECT_TRUE(file->good());
    EXPECT_TRUE(file->finish());
    EXPECT_EQ(names(), std::vector<std::string>{"file.gif"});
    EXPECT_EQ(fileContents(path), expected);
}

TEST_F(RecordingFileTest, ReplacesInOneStep) {
    std::ofstream(path) << "something longer";
    const auto file = RecordingFile::create(files, path);
    ASSERT_TRUE(file);
    file->write(hi);
    EXPECT_EQ(fileContents(path), "something longer");
    EXPECT_TRUE(file->finish());
    EXPECT_EQ(fileContents(path), "hi");
}

TEST_F(RecordingFileTest, GivenUpItLeavesNoTrace) {
    {
        const auto file = RecordingFile::create(files, path);
        ASSERT_TRUE(file);
        file->write(hi);
    }
    EXPECT_TRUE(names().empty());
}

TEST_F(RecordingFileTest, IsNotMadeWhereNoFileCanBe) {
    EXPECT_FALSE(RecordingFile::create(files, folder.path()));
    EXPECT_FALSE(RecordingFile::create(files, folder.path() / "missing" / "file.gif"));
    EXPECT_TRUE(names().empty());
}

TEST_F(RecordingFileTest, FailsForGood) {
    const auto file = RecordingFile::create(files, path);
    ASSERT_TRUE(file);
    files.faultyOperation = 2;
    file->write(std::vector<std::uint8_t>(2'000'000));
    EXPECT_FALSE(file->good());
    EXPECT_EQ(files.operations, 2) << "nothing is tried after a failure";
    file->write(hi);
    EXPECT_FALSE(file->finish());
    EXPECT_FALSE(file->good());
}

TEST_F(RecordingFileTest, TwoAtATimeDoNotMeet) {
    const auto first = RecordingFile::create(files, path);
    const auto second = RecordingFile::create(files, path);
    ASSERT_TRUE(first && second);
    first->write(hi);
    EXPECT_TRUE(first->finish());
    second->write(std::array<std::uint8_t, 2>{'h', 'o'});
    EXPECT_EQ(fileContents(path), "hi");
    EXPECT_TRUE(second->finish());
    EXPECT_EQ(fileContents(path), "ho");
}

TEST_F(RecordingFileTest, OnlyWhatIsAbandonedIsRemoved) {
    const auto living = RecordingFile::create(files, path);
    const std::string held = names()[0];
    ASSERT_EQ(held.size(), std::string(".clipwren-recording-0123456789abcdef.part").size());
    // What the user may have called his own files, and folders.
    std::vector<std::string> others{
        ".clipwren-recording-.part",
        ".clipwren-recording-0123456789abcde.part",
        ".clipwren-recording-0123456789abcdef0.part",
        ".clipwren-recording-0123456789ABCDEF.part",
        ".clipwren-recording-0123456789abcdeg.part",
        ".clipwren-recording-0123456789abcdef.part~",
        "clipwren-recording-0123456789abcdef.part",
        ".clipwren-recording-0123456789abcdef.gif",
        "Recording_2024-03-09_14-05-31.gif",
        "notes.part",
    };
    for (const std::string& name : others)
        std::ofstream(folder.path() / name) << "mine";
    others.push_back(".clipwren-recording-00000000000000aa.part");
    fs::create_directory(folder.path() / others.back());
    others.push_back(".clipwren-recording-00000000000000bb.part");
    fs::create_symlink("notes.part", folder.path() / others.back());

    for (const char* name :
         {".clipwren-recording-0123456789abcdef.part", ".clipwren-recording-ffffffffffffffff.part"})
        std::ofstream(folder.path() / name) << "left behind";
    removeAbandonedRecordings(files, folder.path());

    others.push_back(held);
    auto left = names();
    std::ranges::sort(left);
    std::ranges::sort(others);
    EXPECT_EQ(left, others);
}

TEST_F(RecordingFileTest, WithoutAFolderThereIsNothingToRemove) {
    removeAbandonedRecordings(files, folder.path() / "missing");
    EXPECT_FALSE(fs::exists(folder.path() / "missing"));
}

// A recording of several writes, on a disk that fails at each operation in turn.
class FailingDisk : public testing::Test {
protected:
    FailingDisk() {
        folders.picturesFolder = folder.path();
        std::mt19937 random(1);
        for (int i = 0; i < 6; ++i) {
            TestPicture noise(400, 300);
            for (Pixel& pixel : noise.pixels)
                pixel = 0xFF000000 | static_cast<Pixel>(random() % 200) * 0x10101; // fits a table
            frames.push_back({noise.image(), {i, 10}});
        }
        const auto path = encode();
        EXPECT_TRUE(path);
        if (path) whole = fileContents(*path);
        steps = files.operations;
        EXPECT_GE(steps, 6) << "made, written several times, synced, renamed";
        if (path) fs::remove(*path);
        files.restart();
    }

    Expected<fs::path, GifEncoderError> encode() {
        return GifEncoder::encode(frames, folders, files, canvases);
    }
    void breakDisk(int step, FakeFiles::Fault fault) {
        files.operations = 0;
        files.faultyOperation = step;
        files.fault = fault;
    }
    fs::path output() const { return folder.path() / "Clipwren"; }
    std::vector<fs::path> found() const {
        std::vector<fs::path> result;
        for (const auto& entry : fs::directory_iterator(output()))
            result.push_back(entry.path());
        return result;
    }
    // There is nothing at all, or the beginning of the recording under its own name.
    void expectAtMostAPart() {
        const auto files = found();
        ASSERT_LE(files.size(), 1u);
        if (files.empty()) return;
        EXPECT_EQ(files[0].filename(), "Recording_2024-03-09_14-05-31.gif");
        EXPECT_TRUE(whole.starts_with(fileContents(files[0])));
    }
    // Every name that looks like a recording stands for a whole one.
    void expectNoHalfRecording() {
        for (const auto& path : found())
            if (!path.filename().string().starts_with(".")) {
                EXPECT_TRUE(fileContents(path) == whole) << path;
            }
    }
    // As at the next start of the program.
    void expectCleanAfterRestart() {
        GifEncoder::removeAbandonedRecordings(folders, files);
        for (const auto& path : found())
            EXPECT_EQ(path.filename(), "Recording_2024-03-09_14-05-31.gif");
        const auto path = encode();
        ASSERT_TRUE(path);
        EXPECT_TRUE(fileContents(*path) == whole);
        fs::remove(*path);
    }

    TemporaryFolder folder;
    FakeFolders folders;
    FakeFiles files;
    FakeCanvases canvases;
    std::vector<RecordedFrame> frames;
    std::string whole;
    int steps = 0;
};

TEST_F(FailingDisk, EachFailureIsToldAndLeavesWhatThereIs) {
    for (const auto fault : {FakeFiles::Fault::once, FakeFiles::Fault::forGood})
        for (int step = 1; step <= steps; ++step) {
            SCOPED_TRACE(step);
            breakDisk(step, fault);
            const auto result = encode();
            ASSERT_FALSE(result);
            EXPECT_EQ(result.error(),
                      step == 1 ? GifEncoderError::destinationFailure : GifEncoderError::finalizeFailure);
            expectAtMostAPart();
            // A disk on which nothing can be renamed any more keeps nothing; any other one keeps the part.
            const bool isKept = step > 1 && step < steps && fault == FakeFiles::Fault::once;
            EXPECT_EQ(found().size(), isKept ? 1u : 0u);
            files.restart();
            for (const auto& path : found())
                fs::remove(path);
        }
}

TEST_F(FailingDisk, AKilledProcessLeavesNoHalfRecording) {
    for (int step = 1; step <= steps; ++step) {
        SCOPED_TRACE(step);
        breakDisk(step, FakeFiles::Fault::death);
        EXPECT_FALSE(encode());
        expectNoHalfRecording();
        files.restart();
        expectCleanAfterRestart();
    }
}

TEST_F(FailingDisk, ALostPowerLeavesNoHalfRecording) {
    for (int step = 1; step <= steps + 1; ++step) {
        SCOPED_TRACE(step);
        breakDisk(step, FakeFiles::Fault::death);
        EXPECT_EQ(static_cast<bool>(encode()), step > steps);
        files.losePower();
        expectNoHalfRecording();
        EXPECT_EQ(fs::exists(output() / "Recording_2024-03-09_14-05-31.gif"), step > steps);
        expectCleanAfterRestart();
    }
}

TEST_F(FailingDisk, AnEarlierRecordingSurvivesUntilTheNextIsWhole) {
    const auto earlier = output() / "Recording_2024-03-09_14-05-31.gif";
    for (int step = 1; step <= steps; ++step) {
        SCOPED_TRACE(step);
        std::ofstream(earlier) << "the one before";
        breakDisk(step, FakeFiles::Fault::death);
        EXPECT_FALSE(encode());
        EXPECT_EQ(fileContents(earlier), "the one before");
        files.losePower();
        EXPECT_EQ(fileContents(earlier), "the one before");
    }
}

} // namespace
} // namespace clipwren
