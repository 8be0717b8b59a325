#pragma once

#include "platform/StatusItem.h"

namespace clipwren {

class X11Connection;

// Status items in the panels of Linux desktops. Where no panel takes one within some seconds the user is told
// once, by a notification or else on standard error, that the program runs and how it is used. Main thread
// only.
class LinuxStatusBar final : public StatusBar {
public:
    // `display` is none where there is no X server and outlives the items otherwise; `scale` is pixels a
    // point.
    LinuxStatusBar(X11Connection* display, double scale) : display(display), scale(scale) {}

    std::unique_ptr<StatusItem> makeStatusItem() override;

private:
    X11Connection* const display;
    const double scale;
};

} // namespace clipwren
