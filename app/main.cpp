#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "platform/Application.h"
#include "platform/MainQueue.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/x11/X11ClipboardKeeper.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <span>

namespace clipwren {

namespace {

int report(const Expected<void, PlatformError>& result) {
    if (!result) std::fprintf(stderr, "clipwren: %s\n", result.error().localizedDescription.c_str());
    return result ? 0 : 1;
}

// For a process that has only asked another one. Nothing in it needs an orderly end, and the toolkit's thread
// for the bus would still be at work while static objects go.
[[noreturn]] void endAfter(const Expected<void, PlatformError>& result) {
    const int status = report(result);
    std::fflush(nullptr);
    std::_Exit(status);
}

int run(int& argc, char** argv) {
    const auto computer = LinuxPlatform::connect(argc, argv);
    if (!computer) return report(Unexpected{computer.error()});
    const Platform& ports = (*computer)->ports();
    const auto delegate = AppDelegate::create(ports);

    // Others may ask before the delegate has launched: the queue keeps the order.
    const auto onQueue = [&](std::function<void()> work) {
        return [&ports, work = std::move(work)] { ports.mainQueue.async(work); };
    };
    SingleInstance instance({.activate = onQueue([&] { delegate->applicationShouldHandleReopen(); }),
                             .trigger = onQueue([&] { delegate->triggerRecord(); }),
                             .quit = onQueue([&] { ports.application.terminate(); })});
    switch (instance.claim()) {
    case SingleInstance::Claim::granted: break;
    case SingleInstance::Claim::taken: endAfter(activateRunningInstance());
    case SingleInstance::Claim::alone:
        std::fputs("clipwren: there is no D-Bus session; --trigger and --quit will not reach this Clipwren\n",
                   stderr);
        break;
    }

    ports.application.setActivationPolicy(ActivationPolicy::accessory);
    ports.mainQueue.async([&delegate] { delegate->applicationDidFinishLaunching(); });
    const int status = (*computer)->run([&delegate] { delegate->saveBeforeExit(); });
    delegate->applicationWillTerminate();
    return status;
}

} // namespace

} // namespace clipwren

// The only file that knows both the core and the computer around it.
int main(int argc, char** argv) {
    using namespace clipwren;

    // The same program, but another process: the clipboard's keeper.
    if (const auto status = runClipboardKeeper(argc, argv)) return *status;

    const CommandLine commandLine =
        parseCommandLine(std::span(argv, static_cast<std::size_t>(argc)).subspan(1), CLIPWREN_VERSION);
    switch (commandLine.request) {
    case CommandLine::Request::run: return run(argc, argv);
    case CommandLine::Request::print: return std::fputs(commandLine.text.c_str(), stdout) < 0 ? 1 : 0;
    case CommandLine::Request::refuse: std::fputs(commandLine.text.c_str(), stderr); return 2;
    case CommandLine::Request::trigger: endAfter(triggerRunningInstance());
    case CommandLine::Request::quit: endAfter(quitRunningInstance());
    }
}
