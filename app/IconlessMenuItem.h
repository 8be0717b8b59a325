#pragma once

#include "platform/StatusItem.h"

#include <utility>

namespace clipwren {

// A menu item beside which no image is ever drawn, whoever assigns one.
struct IconlessMenuItem : MenuItem {
    IconlessMenuItem(std::string itemTitle, std::function<void()> itemAction) {
        title = std::move(itemTitle);
        action = std::move(itemAction);
        showsImage = false;
    }
};

} // namespace clipwren
