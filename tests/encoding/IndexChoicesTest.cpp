#include "encoding/IndexChoices.h"

#include <gtest/gtest.h>

#include <vector>

namespace clipwren {
namespace {

constexpr std::uint8_t transparency = 0;

TEST(IndexChoices, CodesAreAsShortAsTheDrawnEntriesAllow) {
    std::vector<IndexChoice> indices{{6, 6}, {transparency, 7}, {transparency, 200}};
    EXPECT_EQ(useShortCodes(indices, transparency), 3);
    EXPECT_EQ(indices, (std::vector<IndexChoice>{{6, 6}, {transparency, 7}, {transparency, transparency}}));
    indices.push_back({255, 255});
    EXPECT_EQ(useShortCodes(indices, transparency), 8);
}

TEST(IndexChoices, ChoicesThatFitStay) {
    const std::vector<IndexChoice> fitting{{6, 6}, {transparency, 7}, {3, 1}};
    std::vector<IndexChoice> indices = fitting;
    EXPECT_EQ(useShortCodes(indices, transparency), 3);
    EXPECT_EQ(indices, fitting);
}

TEST(IndexChoices, TheTransparentEntryCountsToo) {
    std::vector<IndexChoice> indices{{1, 1}, {99, 3}};
    EXPECT_EQ(useShortCodes(indices, 99), 7);
}

} // namespace
} // namespace clipwren
