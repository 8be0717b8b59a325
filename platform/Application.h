#pragma once

#include "base/LocalTime.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace clipwren {

// How the program shows itself: `regular` with an entry among the running applications, `accessory` without.
enum class ActivationPolicy { regular = 0, accessory = 1 };

// What the installed program says of itself; absent parts are those that it does not know.
struct BundleFacts {
    std::optional<std::string> identifier;
    std::optional<std::string> shortVersion; // for people: "1.2.0"
    std::optional<std::string> version;      // counts builds: "7"
    std::optional<LocalTime> executableModificationTime;
};

// A running observation; destroying it ends it, which may happen inside its own handler.
class ActivationObserver {
public:
    virtual ~ActivationObserver() = default;
};

// The running program as the desktop sees it. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    // Asks the desktop to bring this program's windows to the front. May be refused without a word.
    virtual void activateIgnoringOtherApps() = 0;

    // Ends the event loop; the program then ends.
    virtual void terminate() = 0;

    // Calls the handler each time the user comes back to one of this program's windows from another program.
    virtual std::unique_ptr<ActivationObserver> observeDidBecomeActive(std::function<void()> handler) = 0;

    // Read anew at each question.
    virtual BundleFacts bundleFacts() const = 0;

    virtual std::int32_t processIdentifier() const = 0;

    // The shell command that starts a new instance of this program, the program's path quoted.
    virtual std::string launchCommand() const = 0;

    // Runs the command by /bin/sh -c, neither waited for nor ended with this program. A failure is not
    // reported.
    virtual void startShellCommand(const std::string& command) = 0;
};

} // namespace clipwren
