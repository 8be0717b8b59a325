#include "app/AppDelegate.h"
#include "platform/Application.h"
#include "platform/MainQueue.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/x11/X11ClipboardKeeper.h"

#include <cstdio>

// The only file that knows both the core and the computer around it.
int main(int argc, char** argv) {
    using namespace clipwren;

    // The same program, but another process: the clipboard's keeper.
    if (const auto status = runClipboardKeeper(argc, argv)) return *status;

    const auto computer = LinuxPlatform::connect(argc, argv);
    if (!computer) {
        std::fprintf(stderr, "clipwren: %s\n", computer.error().localizedDescription.c_str());
        return 1;
    }
    const Platform& ports = (*computer)->ports();
    const auto delegate = AppDelegate::create(ports);
    ports.application.setActivationPolicy(ActivationPolicy::accessory);
    ports.mainQueue.async([&delegate] { delegate->applicationDidFinishLaunching(); });
    return (*computer)->run([&delegate] { delegate->saveBeforeExit(); });
}
