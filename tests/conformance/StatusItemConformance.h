#pragma once

#include "platform/StatusItem.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace clipwren {

// What every status item does. `Subject` owns one:
//   StatusItem& item();
//   void drop();                          destroys it
//   bool exists();                        whether the panel has it
// and is the panel, which answers when everything told has arrived:
//   std::string text(), toolTip(); bool isRed();
//   std::vector<std::string> menu();      the titles, "" for a separator; none when there is no menu
//   bool click();                         true when the menu opened
//   void choose(int line);                a line of the menu, from 0
template <typename Subject>
class StatusItemConformance : public testing::Test {
protected:
    Subject subject;
    std::vector<std::string> ran;

    std::function<void()> noting(std::string name) {
        return [this, name = std::move(name)] { ran.push_back(name); };
    }
    std::shared_ptr<const Menu> makeMenu() {
        return std::make_shared<const Menu>(Menu{{
            {.title = "First  (⌘⇧G)", .action = noting("first")},
            {.isSeparator = true},
            {.title = "Under_score & more…", .action = noting("second"), .showsImage = false},
            {.title = "Last", .action = noting("last"), .keyEquivalent = "q"},
        }});
    }
};
TYPED_TEST_SUITE_P(StatusItemConformance);

TYPED_TEST_P(StatusItemConformance, ShowsWhatItIsTold) {
    auto& item = this->subject.item();
    item.setSymbolImage("record.circle", "Clipwren");
    item.setToolTip("Clipwren");
    EXPECT_EQ(this->subject.toolTip(), "Clipwren");
    EXPECT_EQ(this->subject.text(), "");
    EXPECT_FALSE(this->subject.isRed());
    EXPECT_TRUE(this->subject.exists());
}

TYPED_TEST_P(StatusItemConformance, ShowsTheNewestTextBesideThePicture) {
    auto& item = this->subject.item();
    item.setSymbolImage("record.circle.fill", "Clipwren");
    item.setContentTint(Tint::systemRed);
    item.setImagePosition(ImagePosition::imageRight);
    item.setToolTip("Stop recording");
    for (const char* text : {"0.0 MB ", "3.2 MB ", "12 MB "}) {
        item.setAttributedTitle({text, {.size = 12}});
        EXPECT_EQ(this->subject.text(), text);
    }
    EXPECT_TRUE(this->subject.isRed());
    EXPECT_EQ(this->subject.toolTip(), "Stop recording");

    item.setContentTint(std::nullopt);
    item.setImagePosition(ImagePosition::imageOnly);
    item.setAttributedTitle({});
    EXPECT_EQ(this->subject.text(), "");
    EXPECT_FALSE(this->subject.isRed());
}

TYPED_TEST_P(StatusItemConformance, GivesItsMenuInOrder) {
    this->subject.item().setMenu(this->makeMenu());
    EXPECT_EQ(this->subject.menu(),
              (std::vector<std::string>{"First  (⌘⇧G)", "", "Under_score & more…", "Last"}));
    this->subject.item().setMenu(nullptr);
    EXPECT_TRUE(this->subject.menu().empty());
}

TYPED_TEST_P(StatusItemConformance, AClickOpensTheMenuAndRunsNothing) {
    this->subject.item().setMenu(this->makeMenu());
    EXPECT_TRUE(this->subject.click());
    EXPECT_TRUE(this->ran.empty());
}

TYPED_TEST_P(StatusItemConformance, AChosenLineRunsItsActionOnce) {
    this->subject.item().setMenu(this->makeMenu());
    this->subject.choose(3);
    this->subject.choose(0);
    this->subject.choose(1);
    EXPECT_EQ(this->ran, (std::vector<std::string>{"last", "first"}));
}

TYPED_TEST_P(StatusItemConformance, WithoutAMenuAClickRunsTheAction) {
    this->subject.item().setMenu(this->makeMenu());
    this->subject.item().setMenu(nullptr);
    this->subject.item().setAction(this->noting("stop"));
    EXPECT_FALSE(this->subject.click());
    EXPECT_EQ(this->ran, std::vector<std::string>{"stop"});
}

TYPED_TEST_P(StatusItemConformance, WithoutMenuAndActionAClickDoesNothing) {
    this->subject.item().setAction(this->noting("stop"));
    this->subject.item().setAction(nullptr);
    EXPECT_FALSE(this->subject.click());
    EXPECT_TRUE(this->ran.empty());
}

TYPED_TEST_P(StatusItemConformance, AnActionMayGiveTheMenuBack) {
    auto& item = this->subject.item();
    const std::string witness = "still whole";
    item.setAction([this, &item, witness] {
        item.setAction(nullptr);
        item.setMenu(this->makeMenu());
        this->ran.push_back(witness);
    });
    EXPECT_FALSE(this->subject.click());
    EXPECT_TRUE(this->subject.click());
    EXPECT_EQ(this->ran, std::vector<std::string>{"still whole"});
}

TYPED_TEST_P(StatusItemConformance, IsGoneWhenItIsDestroyed) {
    this->subject.item().setMenu(this->makeMenu());
    EXPECT_TRUE(this->subject.exists());
    this->subject.drop();
    EXPECT_FALSE(this->subject.exists());
}

REGISTER_TYPED_TEST_SUITE_P(StatusItemConformance, ShowsWhatItIsTold, ShowsTheNewestTextBesideThePicture,
                            GivesItsMenuInOrder, AClickOpensTheMenuAndRunsNothing,
                            AChosenLineRunsItsActionOnce, WithoutAMenuAClickRunsTheAction,
                            WithoutMenuAndActionAClickDoesNothing, AnActionMayGiveTheMenuBack,
                            IsGoneWhenItIsDestroyed);

} // namespace clipwren
