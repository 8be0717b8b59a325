#pragma once

#include "platform/linux/qt/QtMainQueue.h"
#include "platform/linux/x11/ScreenLayout.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11ScreenCapture.h"
#include "tests/conformance/ScreenCaptureConformance.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clipwren {

constexpr Pixel opaque = 0xFF000000;

class DelegateWitness : public StreamDelegate {
public:
    int count = 0;
    PlatformError error;
    void didStopWithError(const PlatformError& reason) override {
        ++count;
        error = reason;
    }
};

// The capture adapter on a server with one stream, and what that stream needs and told.
struct X11TestCapture {
    std::string displayName;
    std::unique_ptr<X11Connection> connection;
    QtMainQueue mainQueue;
    X11ScreenCapture capture;
    std::shared_ptr<SerialQueue> queue = std::make_shared<SerialQueue>("frames");
    std::shared_ptr<SampleKeeper> keeper = std::make_shared<SampleKeeper>();
    std::shared_ptr<DelegateWitness> delegate = std::make_shared<DelegateWitness>();
    std::shared_ptr<CaptureStream> stream;
    CompletionWitness started;
    CompletionWitness stopped;

    // Empty: the display that DISPLAY names.
    explicit X11TestCapture(std::string display = {});

    std::vector<NativeScreen> screens() const;

    // Returns when the start has succeeded or failed. The first screen's display when none is given.
    void begin(const StreamConfiguration& configuration, std::optional<std::uint32_t> display = {});

    // Waits for that many pictures in all.
    bool waitForPictures(std::size_t count);

    // Returns when everything has been delivered.
    bool stop();
};

std::vector<Pixel> pixelsOf(const Image& image);
// Opaque, and the same for the same seed.
std::vector<Pixel> noise(int width, int height, unsigned seed);

// Not scaled.
StreamConfiguration plain(const Rect& rect, int fps = 30);

double nowSeconds();

} // namespace clipwren
