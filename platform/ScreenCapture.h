#pragma once

#include "base/Expected.h"
#include "base/Geometry.h"
#include "base/Image.h"
#include "base/MediaTime.h"
#include "base/SerialQueue.h"
#include "platform/PlatformError.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clipwren {

// Whether this program may record the screen. `askable`: requestPermission may change it.
enum class CapturePermission { granted, askable, denied };

struct ShareableDisplay {
    std::uint32_t displayID = 0;
    friend bool operator==(const ShareableDisplay&, const ShareableDisplay&) = default;
};

struct ShareableWindow {
    std::uint32_t windowID = 0;
    friend bool operator==(const ShareableWindow&, const ShareableWindow&) = default;
};

struct ShareableContent {
    std::vector<ShareableDisplay> displays;
    std::vector<ShareableWindow> windows;
};

// What a stream sees: one display, without the given windows.
struct ContentFilter {
    ShareableDisplay display;
    std::vector<ShareableWindow> excludingWindows;
};

// The four-character code 'BGRA'.
inline constexpr std::uint32_t pixelFormatBGRA = 0x42475241;

struct StreamConfiguration {
    Rect sourceRect; // points of the display, origin at its *top* left, y down; may reach beyond it
    int width = 0;   // pixels of the frames
    int height = 0;
    Rect destinationRect; // where in the frame the source lands, pixels from the top left
    bool scalesToFit = false;
    MediaTime minimumFrameInterval;
    int queueDepth = 0; // how many frames may wait for the output
    std::uint32_t pixelFormat = 0;
    bool showsCursor = false;
    bool capturesAudio = false;
};

enum class StreamOutputType { screen = 0, audio = 1 };

enum class FrameStatus { complete = 0, idle = 1, blank = 2, suspended = 3, started = 4, stopped = 5 };

// One delivery of a stream. Absent parts are those that the platform could not supply.
struct StreamSample {
    bool isValid = false;
    std::optional<int> status; // a FrameStatus by number
    std::optional<Image> image;
    MediaTime presentationTime; // on a clock that does not jump; the same for all samples of a stream
};

class CaptureStream;

class StreamOutput {
public:
    virtual ~StreamOutput() = default;
    // Called on the queue that was given with the output.
    virtual void didOutputSample(CaptureStream& stream, const StreamSample& sample,
                                 StreamOutputType type) = 0;
};

class StreamDelegate {
public:
    virtual ~StreamDelegate() = default;
    // The system ended a running stream. Called at most once, on a thread of the platform's choice.
    virtual void didStopWithError(const PlatformError& error) = 0;
};

// Called later, on the main queue, exactly once; without an error on success.
using StreamCompletion = std::function<void(std::optional<PlatformError>)>;

// A capture that can be started and stopped once. Main thread only. Destroying it ends the capture:
// afterwards nothing more is handed to the queue, and a completion still due comes as a failure.
class CaptureStream {
public:
    virtual ~CaptureStream() = default;

    // Before `start`. Samples go to `output` on `queue`, in order; both are kept alive as long as needed.
    virtual Expected<void, PlatformError> addOutput(std::shared_ptr<StreamOutput> output,
                                                    StreamOutputType type,
                                                    std::shared_ptr<SerialQueue> queue) = 0;

    // Completes when samples can arrive.
    virtual void start(StreamCompletion completion) = 0;

    // Completes when the last sample has been handed to the queue.
    virtual void stop(StreamCompletion completion) = 0;

    // Whether the platform itself crops to the source rectangle and scales. Otherwise it delivers whole
    // displays.
    virtual bool cropsAndScales() const = 0;
};

// Screen recording. Main thread only.
class ScreenCapture {
public:
    using ContentCompletion = std::function<void(Expected<ShareableContent, PlatformError>)>;

    virtual ~ScreenCapture() = default;

    // Asks nobody.
    virtual CapturePermission permission() const = 0;
    // Asks the user, where that is possible; returns at once.
    virtual void requestPermission() = 0;

    // What can be captured now, desktop windows included, only what is on screen. The completion comes later,
    // on the main queue, exactly once.
    virtual void shareableContent(ContentCompletion completion) = 0;

    // The delegate is held weakly.
    virtual std::shared_ptr<CaptureStream> makeStream(const ContentFilter& filter,
                                                      const StreamConfiguration& configuration,
                                                      std::weak_ptr<StreamDelegate> delegate) = 0;
};

} // namespace clipwren
