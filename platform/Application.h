#pragma once

namespace clipwren {

// How the program shows itself: `regular` with an entry among the running applications, `accessory` without.
enum class ActivationPolicy { regular = 0, accessory = 1 };

// The running program as the desktop sees it. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    // Asks the desktop to bring this program's windows to the front. May be refused without a word.
    virtual void activateIgnoringOtherApps() = 0;

    // Ends the event loop; the program then ends.
    virtual void terminate() = 0;
};

} // namespace clipwren
