#pragma once

#include "platform/StatusItem.h"

namespace clipwren {

class X11Connection;
class X11Screens;

// Status items in the panels of Linux desktops. Where no panel takes one within some seconds the user is told
// once, by a notification or else on standard error, that the program runs and how it is used. Main thread
// only.
class LinuxStatusBar final : public StatusBar {
public:
    // Both outlive this object and its items.
    LinuxStatusBar(X11Connection& display, const X11Screens& screens) : display(display), screens(screens) {}

    std::unique_ptr<StatusItem> makeStatusItem() override;

private:
    X11Connection& display;
    const X11Screens& screens;
};

} // namespace clipwren
