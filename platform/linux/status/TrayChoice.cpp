#include "platform/linux/status/TrayChoice.h"

#include <algorithm>
#include <array>

namespace clipwren {

bool desktopShrinksTrayWindows(std::string_view currentDesktop) {
    constexpr std::array<std::string_view, 5> names{"KDE", "GNOME", "Unity", "X-Cinnamon", "LXQt"};
    while (!currentDesktop.empty()) {
        const auto end = std::min(currentDesktop.find(':'), currentDesktop.size());
        if (std::find(names.begin(), names.end(), currentDesktop.substr(0, end)) != names.end()) return true;
        currentDesktop.remove_prefix(std::min(end + 1, currentDesktop.size()));
    }
    return false;
}

} // namespace clipwren
