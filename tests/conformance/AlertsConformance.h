#pragma once

#include "platform/Alerts.h"
#include "platform/MainQueue.h"

#include <gtest/gtest.h>

namespace clipwren {

// What all alerts do. `Subject` owns them:
//   Alerts& alerts();
//   MainQueue& queue();
//   void whenShown(act);  runs the work, later than now, while the next alert is up
//   void press(index);    presses a button of the alert that is up, in the order of `buttons`
//   void close();         closes the alert that is up as a window manager does
template <typename Subject>
class AlertsConformance : public testing::Test {
protected:
    Subject subject;

    static Alert alertWith(std::vector<std::string> buttons) {
        return {"Clipwren", "Could not save GIF: no space", AlertStyle::warning, std::move(buttons)};
    }
};
TYPED_TEST_SUITE_P(AlertsConformance);

TYPED_TEST_P(AlertsConformance, AnswersWithTheButtonThatIsPressed) {
    for (const int index : {0, 1, 2}) {
        this->subject.whenShown([this, index] { this->subject.press(index); });
        EXPECT_EQ(this->subject.alerts().runModal(this->alertWith({"Quit & Reopen", "Later", "Never"})),
                  index);
    }
}

TYPED_TEST_P(AlertsConformance, HasOneButtonWhenNoneIsGiven) {
    this->subject.whenShown([this] { this->subject.press(0); });
    EXPECT_EQ(this->subject.alerts().runModal(this->alertWith({})), 0);
}

TYPED_TEST_P(AlertsConformance, ClosingItAnswersWithTheLastButton) {
    this->subject.whenShown([this] { this->subject.close(); });
    EXPECT_EQ(this->subject.alerts().runModal(this->alertWith({"Quit & Reopen", "Later"})), 1);
    this->subject.whenShown([this] { this->subject.close(); });
    EXPECT_EQ(this->subject.alerts().runModal(this->alertWith({})), 0);
}

TYPED_TEST_P(AlertsConformance, WorkOfTheMainQueueGoesOnMeanwhile) {
    bool isUp = true, ranMeanwhile = false;
    this->subject.queue().async([&] { ranMeanwhile = isUp; });
    this->subject.whenShown([&] { this->subject.queue().async([this] { this->subject.press(0); }); });
    this->subject.alerts().runModal(this->alertWith({}));
    isUp = false;
    EXPECT_TRUE(ranMeanwhile);
}

REGISTER_TYPED_TEST_SUITE_P(AlertsConformance, AnswersWithTheButtonThatIsPressed, HasOneButtonWhenNoneIsGiven,
                            ClosingItAnswersWithTheLastButton, WorkOfTheMainQueueGoesOnMeanwhile);

} // namespace clipwren
