#pragma once

#include "platform/StatusItem.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace clipwren {

// All that a status item has been told.
struct StatusItemState {
    std::string symbolName;
    std::string accessibilityDescription;
    std::optional<Tint> tint;
    ImagePosition imagePosition = ImagePosition::imageOnly;
    AttributedTitle title;
    std::string toolTip;
    std::shared_ptr<const Menu> menu;
    std::function<void()> action;

    // The text beside the picture; empty for none.
    const std::string& shownText() const {
        static const std::string none;
        return imagePosition == ImagePosition::imageRight ? title.text : none;
    }
};

// One way in which a panel shows a status item. It lives as long as the panel that shows it. Main thread
// only.
class StatusItemView {
public:
    virtual ~StatusItemView() = default;

    // The state, which the view knows since it was made and which outlives it, has changed.
    virtual void stateDidChange() = 0;
};

} // namespace clipwren
