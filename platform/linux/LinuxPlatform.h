#pragma once

#include "base/Expected.h"
#include "platform/Platform.h"
#include "platform/ScreenCapture.h"

#include <functional>
#include <memory>

namespace clipwren {

// The computer that Clipwren runs on: a Linux desktop under X11, with its event loop. One a process, on the
// main thread.
class LinuxPlatform {
public:
    // Connects to the display that the environment names. An error is a sentence for the user: without a
    // display there is no Clipwren. `argc` and `argv` are main's and outlive the platform.
    static Expected<std::unique_ptr<LinuxPlatform>, PlatformError> connect(int& argc, char** argv);
    ~LinuxPlatform();

    const Platform& ports() const;

    // Runs the event loop until the application terminates; returns the exit status.
    //
    // `endsUnasked` is called at most once, on the main thread, when the program must end although the user
    // has not quit it: at SIGTERM, SIGINT or SIGHUP, and when the display server goes away. In the latter
    // case the process ends right afterwards without a return to the caller; background work that has begun
    // is finished first.
    int run(std::function<void()> endsUnasked);

private:
    struct Parts;
    explicit LinuxPlatform(std::unique_ptr<Parts> parts);

    const std::unique_ptr<Parts> parts;
};

} // namespace clipwren
