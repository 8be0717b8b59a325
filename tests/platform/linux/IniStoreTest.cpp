#include "platform/linux/IniStore.h"

#include "platform/linux/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace clipwren {

namespace {

namespace fs = std::filesystem;

struct IniStoreTest : testing::Test {
    TemporaryFolder folder;
    fs::path file = folder.path() / "clipwren" / "clipwren.ini";
    IniStore store{file};

    void fill(std::string_view bytes) const {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }
    std::string text(const char* suffix = "") const {
        return readSmallFile(file.string() + suffix, 4 << 20).value_or("(none)");
    }
    std::size_t count() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(file.parent_path()), {}));
    }
};

} // namespace

TEST_F(IniStoreTest, WritesGroupsAndKeys) {
    EXPECT_TRUE(store.setInteger("recording.fps", 24));
    EXPECT_TRUE(store.setInteger("recording.maxDuration", 0));
    EXPECT_EQ(text(), "[recording]\nfps=24\nmaxDuration=0\n");
    EXPECT_EQ(count(), 1u);
}

TEST_F(IniStoreTest, SeesWhatOthersWrote) {
    EXPECT_TRUE(store.setInteger("recording.fps", 24));
    fill("[recording]\nfps=10\n");
    EXPECT_EQ(store.integer("recording.fps"), 10);
    fs::remove(file);
    EXPECT_FALSE(store.contains("recording.fps"));
}

TEST_F(IniStoreTest, KeepsForeignLines) {
    const std::string foreign = "# by hand\n\n[window]\npos=@Point(1 2)\n\xff\xfe nonsense\n";
    fill(foreign);
    EXPECT_TRUE(store.setInteger("recording.fps", 24));
    EXPECT_EQ(text(), foreign + "\n[recording]\nfps=24\n");
}

TEST_F(IniStoreTest, PutsAFileThatIsNoTextAside) {
    const std::string binary("[recording]\nfps=24\n\0\1\2", 22);
    fill(binary);
    EXPECT_FALSE(store.contains("recording.fps"));
    EXPECT_EQ(text(), binary);
    EXPECT_TRUE(store.setInteger("recording.fps", 10));
    EXPECT_EQ(store.integer("recording.fps"), 10);
    EXPECT_EQ(text(".bad"), binary);

    fill(binary);
    EXPECT_TRUE(store.setInteger("recording.fps", 20));
    EXPECT_EQ(text(".bad2"), binary);
    EXPECT_EQ(text(), "[recording]\nfps=20\n");
}

TEST_F(IniStoreTest, PutsAHugeFileAside) {
    const std::string huge = "[recording]\nfps=24\n" + std::string(2 << 20, '#');
    fill(huge);
    EXPECT_FALSE(store.contains("recording.fps"));
    EXPECT_TRUE(store.setInteger("recording.fps", 10));
    EXPECT_EQ(text(".bad"), huge);
}

TEST_F(IniStoreTest, AFolderInItsPlaceIsAnEmptyStoreThatRefuses) {
    fs::create_directories(file);
    EXPECT_FALSE(store.contains("recording.fps"));
    EXPECT_FALSE(store.setInteger("recording.fps", 10));
    EXPECT_FALSE(store.removeAll());
    EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(IniStoreTest, RemovesTheFile) {
    fill("[foreign]\na=b\n");
    EXPECT_TRUE(store.removeAll());
    EXPECT_FALSE(fs::exists(file));
    EXPECT_TRUE(store.removeAll());
}

} // namespace clipwren
