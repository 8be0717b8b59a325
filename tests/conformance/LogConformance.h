#pragma once

#include "platform/Log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

namespace clipwren {

// What every log does. `Subject` owns an empty one:
//   Log& log();
//   std::vector<std::string> lines();  what was logged so far; asked once
template <typename Subject>
class LogConformance : public testing::Test {
protected:
    Subject subject;
};
TYPED_TEST_SUITE_P(LogConformance);

TYPED_TEST_P(LogConformance, KeepsLinesInOrder) {
    this->subject.log().write("[Clipwren] GIF copied to clipboard — Recording.gif");
    this->subject.log().write("100 %s %n done");
    this->subject.log().write("");
    EXPECT_EQ(this->subject.lines(),
              (std::vector<std::string>{"[Clipwren] GIF copied to clipboard — Recording.gif",
                                        "100 %s %n done", ""}));
}

TYPED_TEST_P(LogConformance, TakesWholeLinesFromAnyThread) {
    const std::string first(200, 'a'), second(200, 'b');
    const auto feed = [&](const std::string& line) {
        for (int count = 0; count < 100; ++count)
            this->subject.log().write(line);
    };
    std::thread one([&] { feed(first); }), two([&] { feed(second); });
    one.join();
    two.join();
    const auto lines = this->subject.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), first), 100);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), second), 100);
}

REGISTER_TYPED_TEST_SUITE_P(LogConformance, KeepsLinesInOrder, TakesWholeLinesFromAnyThread);

} // namespace clipwren
