#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace clipwren {

// Notices that the program must end although the user has not quit it, and lets it save what it has. One a
// process, on the main thread.
//
// A signal (SIGTERM, SIGINT, SIGHUP) runs `save` from the event loop and then quits it. A lost display leaves
// no event loop to go back to: Qt calls exit() as soon as it notices, from inside whatever it was doing.
// `save` runs then too, from the exit handlers, while everything still stands.
class UnaskedEnd {
public:
    // `finish` runs after `save` when the process ends without a return from the event loop: it completes
    // what other threads have begun.
    UnaskedEnd(std::function<void()> save, std::function<void()> finish);
    // Exit handlers run before the static objects that were made earlier are torn down: called once
    // everything that `save` needs of the toolkit has been used.
    void watchExit();

    // From here on an end is an ordinary one.
    ~UnaskedEnd();
    UnaskedEnd(const UnaskedEnd&) = delete;
    UnaskedEnd& operator=(const UnaskedEnd&) = delete;

    // The display is gone: saves, then ends the process with status 1.
    [[noreturn]] void displayIsLost();

private:
    static void atExit();
    void saveOnce();
    void signalArrived();

    std::function<void()> save;
    const std::function<void()> finish;
    std::unique_ptr<QSocketNotifier> signalNotifier;
};

} // namespace clipwren
