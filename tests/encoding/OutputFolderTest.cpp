#include "encoding/OutputFolder.h"
#include "encoding/GifEncoder.h"

#include "tests/fakes/FakeFolders.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace clipwren {
namespace {

namespace fs = std::filesystem;

class OutputFolderTest : public testing::Test {
protected:
    OutputFolderTest() {
        folders.picturesFolder = base;
        folders.homeFolder = folder.path() / "home";
    }

    // A file system that ignores case never has both spellings.
    bool caseMatters() const {
        std::ofstream(folder.path() / "probe");
        return !fs::exists(folder.path() / "PROBE");
    }

    TemporaryFolder folder;
    fs::path base = folder.path() / "Bilder";
    FakeFolders folders;
};

TEST_F(OutputFolderTest, IsMadeInThePicturesFolderEachTime) {
    EXPECT_EQ(GifEncoder::outputDirectory(folders), base / "Clipwren");
    EXPECT_TRUE(fs::is_directory(base / "Clipwren"));
    fs::remove_all(base);
    EXPECT_EQ(GifEncoder::outputDirectory(folders), base / "Clipwren");
    EXPECT_TRUE(fs::is_directory(base / "Clipwren"));
}

TEST_F(OutputFolderTest, WithoutAPicturesFolderItIsUnderHome) {
    folders.picturesFolder.reset();
    EXPECT_EQ(GifEncoder::outputDirectory(folders), folder.path() / "home" / "Pictures" / "Clipwren");
    EXPECT_TRUE(fs::is_directory(folder.path() / "home" / "Pictures" / "Clipwren"));
}

TEST_F(OutputFolderTest, AnEarlierSpellingIsRenamed) {
    if (!caseMatters()) GTEST_SKIP() << "this file system ignores case";
    fs::create_directories(base / "ClipWren");
    std::ofstream(base / "ClipWren" / "old.gif") << "old";
    GifEncoder::outputDirectory(folders);
    EXPECT_FALSE(fs::exists(base / "ClipWren"));
    EXPECT_TRUE(fs::exists(base / "Clipwren" / "old.gif"));
}

TEST_F(OutputFolderTest, BesideTheTargetAnEarlierSpellingIsLeftAlone) {
    if (!caseMatters()) GTEST_SKIP() << "this file system ignores case";
    fs::create_directories(base / "ClipWren");
    fs::create_directories(base / "Clipwren");
    GifEncoder::outputDirectory(folders);
    EXPECT_TRUE(fs::exists(base / "ClipWren"));
    EXPECT_TRUE(fs::exists(base / "Clipwren"));
}

TEST_F(OutputFolderTest, AFolderThatCannotBeMadeIsStillTold) {
    std::ofstream{base} << "a file in the way";
    EXPECT_EQ(GifEncoder::outputDirectory(folders), base / "Clipwren");
}

TEST(RecordingFileName, PadsEveryNumber) {
    EXPECT_EQ(recordingFileName({2024, 3, 9, 14, 5, 31}), "Recording_2024-03-09_14-05-31.gif");
    EXPECT_EQ(recordingFileName({987, 12, 31, 0, 0, 0}), "Recording_0987-12-31_00-00-00.gif");
}

} // namespace
} // namespace clipwren
