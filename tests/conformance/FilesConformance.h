#pragma once

#include "platform/Files.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>

namespace clipwren {

// What every Files does. `Subject` owns one:
//   Files& files();
template <typename Subject>
class FilesConformance : public testing::Test {
protected:
    static constexpr std::array<std::uint8_t, 5> bytes{'h', 'e', 'l', 'l', 'o'};

    std::filesystem::path path(const char* name) const { return folder.path() / name; }
    bool exists(const char* name) const { return std::filesystem::exists(path(name)); }

    Subject subject;
    TemporaryFolder folder;
};
TYPED_TEST_SUITE_P(FilesConformance);

TYPED_TEST_P(FilesConformance, WritesWhatItIsGiven) {
    std::string expected;
    const auto file = this->subject.files().create(this->path("new"));
    ASSERT_TRUE(file);
    EXPECT_EQ(fileContents(this->path("new")), "");
    for (const std::size_t size : {1u, 0u, 300u, 70'000u, 600'000u, 3u}) {
        const std::vector<std::uint8_t> part(size, static_cast<std::uint8_t>(size));
        EXPECT_TRUE(file->write(part));
        expected.append(part.begin(), part.end());
    }
    EXPECT_TRUE(file->sync());
    EXPECT_EQ(fileContents(this->path("new")), expected);
}

TYPED_TEST_P(FilesConformance, MakesNoFileWhereSomethingIs) {
    std::ofstream(this->path("file")) << "mine";
    std::filesystem::create_directory(this->path("folder"));
    std::filesystem::create_symlink("nowhere", this->path("link"));
    for (const char* name : {"file", "folder", "link"})
        EXPECT_FALSE(this->subject.files().create(this->path(name))) << name;
    EXPECT_EQ(fileContents(this->path("file")), "mine");
    EXPECT_FALSE(this->exists("nowhere"));
}

TYPED_TEST_P(FilesConformance, MakesNoFileOutsideOfFolders) {
    std::ofstream(this->path("file")) << "mine";
    EXPECT_FALSE(this->subject.files().create(this->path("missing") / "new"));
    EXPECT_FALSE(this->subject.files().create(this->path("file") / "new"));
}

TYPED_TEST_P(FilesConformance, RenamesAndReplaces) {
    std::ofstream(this->path("old")) << "something longer";
    auto file = this->subject.files().create(this->path("new"));
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->write(this->bytes));
    EXPECT_TRUE(file->rename(this->path("old")));
    EXPECT_FALSE(this->exists("new"));
    EXPECT_EQ(fileContents(this->path("old")), "hello");
    // It is the same file, whatever it is called.
    EXPECT_TRUE(file->write(this->bytes));
    file = nullptr;
    EXPECT_EQ(fileContents(this->path("old")), "hellohello");
}

TYPED_TEST_P(FilesConformance, KeepsItsNameWhenAFolderHasTheOther) {
    std::filesystem::create_directory(this->path("folder"));
    const auto file = this->subject.files().create(this->path("new"));
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->rename(this->path("folder")));
    EXPECT_FALSE(file->rename(this->path("missing") / "new"));
    EXPECT_TRUE(this->exists("new"));
    file->remove();
    EXPECT_FALSE(this->exists("new"));
}

TYPED_TEST_P(FilesConformance, OnlyWhatNobodyHoldsIsAbandoned) {
    Files& files = this->subject.files();
    auto file = files.create(this->path("new"));
    ASSERT_TRUE(file);
    EXPECT_FALSE(files.removeAbandoned(this->path("new")));
    EXPECT_TRUE(file->write(this->bytes));
    EXPECT_FALSE(files.removeAbandoned(this->path("new")));
    EXPECT_TRUE(this->exists("new"));
    file = nullptr;
    EXPECT_TRUE(files.removeAbandoned(this->path("new")));
    EXPECT_FALSE(this->exists("new"));
    EXPECT_FALSE(files.removeAbandoned(this->path("new")));
}

TYPED_TEST_P(FilesConformance, NothingButAFileIsAbandoned) {
    std::ofstream(this->path("target")) << "mine";
    std::filesystem::create_directory(this->path("folder"));
    std::filesystem::create_symlink("target", this->path("link"));
    for (const char* name : {"folder", "link", "missing"})
        EXPECT_FALSE(this->subject.files().removeAbandoned(this->path(name))) << name;
    for (const char* name : {"folder", "link", "target"})
        EXPECT_TRUE(this->exists(name)) << name;
}

REGISTER_TYPED_TEST_SUITE_P(FilesConformance, WritesWhatItIsGiven, MakesNoFileWhereSomethingIs,
                            MakesNoFileOutsideOfFolders, RenamesAndReplaces,
                            KeepsItsNameWhenAFolderHasTheOther, OnlyWhatNobodyHoldsIsAbandoned,
                            NothingButAFileIsAbandoned);

} // namespace clipwren
