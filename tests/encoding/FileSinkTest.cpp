#include "encoding/FileSink.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <iterator>

namespace clipwren {
namespace {

std::vector<std::uint8_t> contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(FileSink, WritesWhatItIsGiven) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file";
    std::vector<std::uint8_t> expected;
    const auto sink = FileSink::create(path);
    ASSERT_TRUE(sink);
    for (std::size_t size : {1u, 0u, 300u, 70'000u, 600'000u, 3u}) {
        const std::vector<std::uint8_t> part(size, static_cast<std::uint8_t>(size));
        sink->write(part);
        expected.insert(expected.end(), part.begin(), part.end());
    }
    EXPECT_TRUE(sink->good());
    EXPECT_TRUE(sink->close());
    EXPECT_EQ(contents(path), expected);
}

TEST(FileSink, ReplacesTheFileThatIsThere) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file";
    std::ofstream(path) << "something longer";
    const auto sink = FileSink::create(path);
    ASSERT_TRUE(sink);
    sink->write(std::array<std::uint8_t, 2>{'h', 'i'});
    EXPECT_TRUE(sink->close());
    EXPECT_EQ(contents(path), (std::vector<std::uint8_t>{'h', 'i'}));
}

TEST(FileSink, IsNotMadeWhereNothingCanBeWritten) {
    const TemporaryFolder folder;
    EXPECT_FALSE(FileSink::create(folder.path()));
    EXPECT_FALSE(FileSink::create(folder.path() / "missing" / "file"));
}

// The device that answers every write like a full disk.
class FullDevice : public testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "this system has no /dev/full";
    }
};

TEST_F(FullDevice, FewBytesFailWhenTheyAreWrittenOut) {
    const auto sink = FileSink::create("/dev/full");
    ASSERT_TRUE(sink);
    sink->write(std::array<std::uint8_t, 3>{1, 2, 3});
    EXPECT_FALSE(sink->close());
    EXPECT_FALSE(sink->good());
}

TEST_F(FullDevice, ManyBytesFailAtOnceAndForGood) {
    const auto sink = FileSink::create("/dev/full");
    ASSERT_TRUE(sink);
    sink->write(std::vector<std::uint8_t>(2'000'000));
    EXPECT_FALSE(sink->good());
    sink->write(std::array<std::uint8_t, 1>{1});
    EXPECT_FALSE(sink->good());
    EXPECT_FALSE(sink->close());
}

} // namespace
} // namespace clipwren
