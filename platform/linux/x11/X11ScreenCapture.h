#pragma once

#include "platform/MainQueue.h"
#include "platform/ScreenCapture.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace clipwren {

class X11Connection;

// Screen recording on X11, where every program may see the screen. The root window of Xwayland is the
// exception: it shows nothing of the Wayland desktop, and nobody can be asked.
class X11ScreenCapture final : public ScreenCapture {
public:
    // Both outlive this object and the streams. Streams connect to the display by themselves; `displayName`
    // empty: the one that DISPLAY names.
    X11ScreenCapture(X11Connection& connection, MainQueue& mainQueue, std::string displayName = {});

    CapturePermission permission() const override;
    // Asks nobody: what is denied here cannot be granted. Calls `explainDenial` later, on the main queue.
    void requestPermission() override;
    // Tells the user why the permission is denied.
    std::function<void()> explainDenial;

    void shareableContent(ContentCompletion completion) override;

    // Windows cannot be left out of what an X server shows: the caller leaves the region clear of them.
    std::shared_ptr<CaptureStream> makeStream(const ContentFilter& filter,
                                              const StreamConfiguration& configuration,
                                              std::weak_ptr<StreamDelegate> delegate) override;

    // Ends every capture that still runs: before the main queue goes, to which their threads report.
    void endStreams();

private:
    X11Connection& connection;
    MainQueue& mainQueue;
    const std::string displayName;
    std::vector<std::weak_ptr<CaptureStream>> streams;
};

} // namespace clipwren
