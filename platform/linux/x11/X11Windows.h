#pragma once

#include "platform/Windows.h"
#include "platform/linux/x11/X11CoveringWindow.h"
#include "platform/linux/x11/X11KeyboardGrab.h"
#include "platform/linux/x11/X11WindowStack.h"

#include <QFont>

#include <memory>

namespace clipwren {

class X11Screens;

// Covering windows and key monitors on an X server. Main thread only; needs a QGuiApplication.
class X11Windows final : public Windows {
public:
    // Both outlive this object. Hot keys that are to work while keys are monitored exist before.
    X11Windows(X11Connection& connection, X11Screens& screens);
    ~X11Windows() override;

    // With which covering windows show texts.
    static QFont interfaceFont();

    std::unique_ptr<CoveringWindow> makeCoveringWindow(const CoveringWindowOptions& options) override;

    // Takes the whole keyboard for the time of the monitor, because no window of this program ever has the
    // focus: keys that the handler does not swallow reach nobody. One monitor at a time.
    std::unique_ptr<KeyMonitor> monitorKeyDown(std::function<bool(std::uint32_t keyCode)> handler) override;

private:
    X11Connection& connection;
    X11Screens& screens;
    X11Compositor compositor;
    X11WindowStack stack;
    X11KeyboardGrab keyboardGrab;
    X11CoveringWindow::Surroundings surroundings;
};

} // namespace clipwren
