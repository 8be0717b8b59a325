#pragma once

#include <string_view>

namespace clipwren {

// Where a status item can be shown right now.
struct TrayFacts {
    bool hasWindowTray = false;      // a system tray of the X server takes windows (XEmbed)
    bool hasItemHost = false;        // somebody on the session bus watches for StatusNotifierItems
    bool shrinksTrayWindows = false; // the desktop turns tray windows into square pictures
};

enum class TrayKind { none, item, window };

// A window of our own shows the text beside the picture in every tray that lets windows have their width; a
// StatusNotifierItem shows it in few panels. So the window goes first, but where the desktop only takes a
// picture of it.
constexpr TrayKind chooseTray(const TrayFacts& facts) {
    if (facts.hasWindowTray && !(facts.hasItemHost && facts.shrinksTrayWindows)) return TrayKind::window;
    return facts.hasItemHost ? TrayKind::item : TrayKind::none;
}

// Whether a desktop, told by the colon-separated names of XDG_CURRENT_DESKTOP, does that.
bool desktopShrinksTrayWindows(std::string_view currentDesktop);

} // namespace clipwren
