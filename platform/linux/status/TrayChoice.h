#pragma once

#include <string_view>

namespace clipwren {

// What the desktop's panel makes of a status item.
struct PanelHabits {
    bool shrinksTrayWindows = false;   // takes windows in its tray for square pictures
    bool labelReplacesPicture = false; // shows an item's label instead of its picture, even when it is gone
};

// The habits of the desktop that XDG_CURRENT_DESKTOP names, in a list parted by colons.
PanelHabits panelHabits(std::string_view currentDesktop);

// Where a status item can be shown right now.
struct TrayFacts {
    bool hasWindowTray = false; // a system tray of the X server takes windows (XEmbed)
    bool hasItemHost = false;   // somebody on the session bus watches for StatusNotifierItems
};

enum class TrayKind { none, item, window };

// A window of our own shows the text beside the picture in every tray that lets windows have their width; a
// StatusNotifierItem shows it in few panels. So the window goes first, but where the desktop only takes a
// picture of it.
constexpr TrayKind chooseTray(const TrayFacts& facts, const PanelHabits& habits) {
    if (facts.hasWindowTray && !(facts.hasItemHost && habits.shrinksTrayWindows)) return TrayKind::window;
    return facts.hasItemHost ? TrayKind::item : TrayKind::none;
}

} // namespace clipwren
