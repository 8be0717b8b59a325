#include "platform/linux/qt/QtAlerts.h"

#include "tests/fakes/FakeServices.h"

#include <gtest/gtest.h>

namespace clipwren {

TEST(QtAlerts, GoToTheLogWhereNoWindowCanBeShown) {
    FakeLog log;
    QtAlerts alerts(log);
    EXPECT_EQ(alerts.runModal({"Clipwren", "Could not save GIF: no space"}), 0);
    EXPECT_EQ(alerts.runModal({"Clipwren", "why", AlertStyle::warning, {"Quit & Reopen", "Later"}}), 1);
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{"Clipwren: Could not save GIF: no space", "Clipwren: why"}));
}

} // namespace clipwren
