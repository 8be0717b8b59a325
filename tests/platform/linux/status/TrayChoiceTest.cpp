#include "platform/linux/status/TrayChoice.h"

#include <gtest/gtest.h>

namespace clipwren {

namespace {

constexpr PanelHabits plain;
constexpr PanelHabits shrinking{.shrinksTrayWindows = true};

TEST(TrayChoice, PrefersTheWindowWhereItKeepsItsWidth) {
    EXPECT_EQ(chooseTray({.hasWindowTray = true, .hasItemHost = true}, plain), TrayKind::window);
    EXPECT_EQ(chooseTray({.hasWindowTray = true, .hasItemHost = true}, shrinking), TrayKind::item);
}

TEST(TrayChoice, TakesWhatIsThere) {
    for (const PanelHabits& habits : {plain, shrinking}) {
        EXPECT_EQ(chooseTray({}, habits), TrayKind::none);
        EXPECT_EQ(chooseTray({.hasWindowTray = true}, habits), TrayKind::window);
        EXPECT_EQ(chooseTray({.hasItemHost = true}, habits), TrayKind::item);
    }
}

TEST(TrayChoice, KnowsDesktopsByTheirNames) {
    for (const char* name : {"KDE", "GNOME", "ubuntu:GNOME", "X-Cinnamon", "LXQt", "Unity:Unity7"})
        EXPECT_TRUE(panelHabits(name).shrinksTrayWindows) << name;
    for (const char* name : {"", ":", "XFCE", "MATE", "KDEish", "gnome", "NOTKDE:X"})
        EXPECT_FALSE(panelHabits(name).shrinksTrayWindows) << name;
    EXPECT_TRUE(panelHabits("MATE").labelReplacesPicture);
    EXPECT_FALSE(panelHabits("XFCE").labelReplacesPicture);
}

} // namespace

} // namespace clipwren
