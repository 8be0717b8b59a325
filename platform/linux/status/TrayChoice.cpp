#include "platform/linux/status/TrayChoice.h"

#include <algorithm>
#include <array>

namespace clipwren {

PanelHabits panelHabits(std::string_view currentDesktop) {
    constexpr std::array<std::string_view, 5> shrinking{"KDE", "GNOME", "Unity", "X-Cinnamon", "LXQt"};
    PanelHabits habits;
    while (!currentDesktop.empty()) {
        const auto end = std::min(currentDesktop.find(':'), currentDesktop.size());
        const auto name = currentDesktop.substr(0, end);
        if (std::find(shrinking.begin(), shrinking.end(), name) != shrinking.end())
            habits.shrinksTrayWindows = true;
        if (name == "MATE") habits.labelReplacesPicture = true;
        currentDesktop.remove_prefix(std::min(end + 1, currentDesktop.size()));
    }
    return habits;
}

} // namespace clipwren
