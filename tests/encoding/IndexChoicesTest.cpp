#include "encoding/IndexChoices.h"

#include <gtest/gtest.h>

#include <vector>

namespace clipwren {
namespace {

constexpr std::uint8_t transparency = 0;

std::vector<IndexChoice> choices(std::size_t drawn, std::size_t staying) {
    std::vector<IndexChoice> result(drawn, {7, 7});
    result.insert(result.end(), staying, {transparency, 9});
    result.push_back({8, 8});
    return result;
}

TEST(IndexChoices, ShortRowsAreDrawnOnceMore) {
    std::vector<IndexChoice> indices = choices(3, 16);
    decideStaying(indices, transparency);
    for (std::size_t i = 0; i < indices.size(); ++i)
        EXPECT_EQ(indices[i], i < 3    ? (IndexChoice{7, 7})
                              : i < 19 ? (IndexChoice{9, 9})
                                       : (IndexChoice{8, 8}));
}

TEST(IndexChoices, LongRowsStay) {
    std::vector<IndexChoice> indices = choices(0, 17);
    decideStaying(indices, transparency);
    for (std::size_t i = 0; i < 17; ++i)
        EXPECT_EQ(indices[i], (IndexChoice{transparency, transparency}));
    EXPECT_EQ(indices.back(), (IndexChoice{8, 8}));
}

TEST(IndexChoices, RowsAtTheEndAreDecidedToo) {
    std::vector<IndexChoice> indices(20, {transparency, 5});
    decideStaying(indices, transparency);
    EXPECT_EQ(indices, std::vector<IndexChoice>(20, {transparency, transparency}));
    indices.assign(2, {transparency, 5});
    decideStaying(indices, transparency);
    EXPECT_EQ(indices, std::vector<IndexChoice>(2, {5, 5}));
}

TEST(IndexChoices, CodesAreAsShortAsTheDrawnEntriesAllow) {
    std::vector<IndexChoice> indices{{6, 6}, {transparency, 7}, {transparency, 200}};
    EXPECT_EQ(useShortCodes(indices, transparency), 3);
    EXPECT_EQ(indices, (std::vector<IndexChoice>{{6, 6}, {transparency, 7}, {transparency, transparency}}));
    indices.push_back({255, 255});
    EXPECT_EQ(useShortCodes(indices, transparency), 8);
}

TEST(IndexChoices, TheTransparentEntryCountsToo) {
    std::vector<IndexChoice> indices{{1, 1}, {99, 3}};
    EXPECT_EQ(useShortCodes(indices, 99), 7);
}

} // namespace
} // namespace clipwren
