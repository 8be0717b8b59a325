#pragma once

#include "platform/Application.h"

namespace clipwren {

// The program as Qt shows it. X11 desktops know no policy of a whole program: a window that is to have a
// taskbar entry has one while it is open, so the policy needs nothing done.
class QtApplication : public Application {
public:
    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    void terminate() override;
};

} // namespace clipwren
