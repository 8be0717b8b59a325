#pragma once

#include "platform/Folders.h"

#include <gtest/gtest.h>

namespace clipwren {

// What every Folders does. `Subject` owns one:
//   Folders& folders();
//   void report(pictures);  makes the system report that pictures folder, or none, from now on
//   path home();            the home folder that the system has
template <typename Subject>
class FoldersConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(FoldersConformance);

TYPED_TEST_P(FoldersConformance, TellsTheHomeFolder) {
    EXPECT_EQ(this->subject.folders().home(), this->subject.home());
    EXPECT_TRUE(this->subject.folders().home().is_absolute());
}

TYPED_TEST_P(FoldersConformance, TellsThePicturesFolderOfTheMoment) {
    EXPECT_EQ(this->subject.folders().pictures(), std::nullopt);
    const auto folder = this->subject.home() / "Bilder und \"mehr\"";
    this->subject.report(folder);
    EXPECT_EQ(this->subject.folders().pictures(), folder);
    this->subject.report(std::filesystem::path("/data/pictures"));
    EXPECT_EQ(this->subject.folders().pictures(), std::filesystem::path("/data/pictures"));
    this->subject.report(std::nullopt);
    EXPECT_EQ(this->subject.folders().pictures(), std::nullopt);
}

TYPED_TEST_P(FoldersConformance, TellsATimeOfTheCalendar) {
    const auto now = this->subject.folders().now();
    EXPECT_GE(now.year, 2024);
    EXPECT_TRUE(now.month >= 1 && now.month <= 12) << now.month;
    EXPECT_TRUE(now.day >= 1 && now.day <= 31) << now.day;
    EXPECT_TRUE(now.hour >= 0 && now.hour <= 23) << now.hour;
    EXPECT_TRUE(now.minute >= 0 && now.minute <= 59) << now.minute;
    EXPECT_TRUE(now.second >= 0 && now.second <= 60) << now.second;
}

REGISTER_TYPED_TEST_SUITE_P(FoldersConformance, TellsTheHomeFolder, TellsThePicturesFolderOfTheMoment,
                            TellsATimeOfTheCalendar);

} // namespace clipwren
