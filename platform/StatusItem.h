#pragma once

#include "platform/Canvas.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clipwren {

// One line of a status item's menu. A separator has neither title nor action.
struct MenuItem {
    std::string title;
    std::function<void()> action;
    std::string
        keyEquivalent; // with the desktop's command modifier, only while the menu is open; "" for none
    bool isSeparator = false;
    bool showsImage = true; // false: no image is ever drawn beside it
};

struct Menu {
    std::vector<MenuItem> items;
};

enum class ImagePosition { imageOnly = 1, imageRight = 3 };

enum class Tint { systemRed };

struct AttributedTitle {
    std::string text;
    Font font;
    friend bool operator==(const AttributedTitle&, const AttributedTitle&) = default;
};

// The program's item in the panel. Its length follows what it shows. Main thread only.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    // The symbol's picture in the panel's own colour. An unknown symbol leaves the item without a picture.
    virtual void setSymbolImage(const std::string& symbolName,
                                const std::string& accessibilityDescription) = 0;
    virtual void setContentTint(std::optional<Tint> tint) = 0;
    virtual void setImagePosition(ImagePosition position) = 0;
    // In the panel's text colour; an empty text shows none.
    virtual void setAttributedTitle(const AttributedTitle& title) = 0;
    virtual void setToolTip(const std::string& text) = 0;

    // A click opens the menu; none detaches it.
    virtual void setMenu(std::shared_ptr<const Menu> menu) = 0;
    // Without a menu a click runs the action; none clears it.
    virtual void setAction(std::function<void()> action) = 0;
};

class StatusBar {
public:
    virtual ~StatusBar() = default;

    // A new item of variable length; nothing where status items cannot be shown.
    virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

} // namespace clipwren
