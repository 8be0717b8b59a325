#pragma once

#include "platform/Screens.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <vector>

namespace clipwren {

// What every list of screens is like. `Subject` owns one that has at least one screen:
//   Screens& screens();
//   void plug();        attaches one more screen, and detaches it when called again
//   bool passUntil(std::function<bool()>);
template <typename Subject>
class ScreensConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(ScreensConformance);

TYPED_TEST_P(ScreensConformance, BeginsWithTheScreenAtTheOrigin) {
    const auto screens = this->subject.screens().screens();
    ASSERT_FALSE(screens.empty());
    EXPECT_EQ(screens.front().frame.x, 0);
    EXPECT_EQ(screens.front().frame.y, 0);
}

TYPED_TEST_P(ScreensConformance, GivesEachScreenAnAreaAndANumberOfItsOwn) {
    std::set<std::uint32_t> numbers;
    for (const Screen& screen : this->subject.screens().screens()) {
        EXPECT_GT(screen.frame.width, 0);
        EXPECT_GT(screen.frame.height, 0);
        ASSERT_TRUE(screen.screenNumber);
        EXPECT_TRUE(numbers.insert(*screen.screenNumber).second);
    }
}

TYPED_TEST_P(ScreensConformance, TheMainScreenIsOneOfThem) {
    const auto main = this->subject.screens().main();
    ASSERT_TRUE(main);
    int found = 0;
    for (const Screen& screen : this->subject.screens().screens())
        found += screen.frame == main->frame && screen.screenNumber == main->screenNumber ? 1 : 0;
    EXPECT_EQ(found, 1);
}

TYPED_TEST_P(ScreensConformance, TheMainDisplayIsTheFirstScreens) {
    EXPECT_EQ(this->subject.screens().mainDisplayID(),
              this->subject.screens().screens().front().screenNumber);
}

TYPED_TEST_P(ScreensConformance, KeepsItsOrder) {
    const auto first = this->subject.screens().screens();
    const auto second = this->subject.screens().screens();
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].frame, second[i].frame);
        EXPECT_EQ(first[i].screenNumber, second[i].screenNumber);
    }
}

TYPED_TEST_P(ScreensConformance, TellsThatScreensHaveChanged) {
    Screens& screens = this->subject.screens();
    const auto count = screens.screens().size();
    std::vector<std::size_t> seen, seenByOther;
    auto observer = screens.observeDidChange([&] { seen.push_back(screens.screens().size()); });
    std::unique_ptr<ScreensObserver> other = screens.observeDidChange([&] {
        seenByOther.push_back(screens.screens().size());
        other = nullptr;
    });
    this->subject.plug();
    EXPECT_TRUE(this->subject.passUntil([&] { return !seen.empty() && !seenByOther.empty(); }));
    EXPECT_EQ(seen, (std::vector<std::size_t>{count + 1}));
    this->subject.plug();
    EXPECT_TRUE(this->subject.passUntil([&] { return seen.size() == 2; }));
    EXPECT_EQ(seen.back(), count);
    EXPECT_EQ(seenByOther, (std::vector<std::size_t>{count + 1})) << "it has ended inside its own handler";
}

REGISTER_TYPED_TEST_SUITE_P(ScreensConformance, BeginsWithTheScreenAtTheOrigin,
                            GivesEachScreenAnAreaAndANumberOfItsOwn, TheMainScreenIsOneOfThem,
                            TheMainDisplayIsTheFirstScreens, KeepsItsOrder, TellsThatScreensHaveChanged);

} // namespace clipwren
