#pragma once

#include "base/Geometry.h"
#include "capture/RecordedFrame.h"
#include "capture/RecordingError.h"
#include "platform/Platform.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace clipwren {

class FrameStore;
class WorkItem;
struct Screen;

// Captures one region of the screen into memory, once. Main thread only; completions come later, on the main
// queue, exactly once. The frames themselves are kept on a queue of the recorder's own.
class ScreenRecorder : public std::enable_shared_from_this<ScreenRecorder> {
public:
    using StartCompletion = std::function<void(std::optional<StartError>)>;
    using StopCompletion = std::function<void(std::vector<RecordedFrame>)>;

    static std::shared_ptr<ScreenRecorder> create(const Platform& platform);
    ~ScreenRecorder();

    // Called on the main thread once the recording has lasted as long as the user allows. It ends nothing by
    // itself.
    std::function<void()> onMaxDurationReached;

    // Called on the main thread, at most once, when so little memory is left that the frames kept so far just
    // can be made into a GIF. It ends nothing by itself either.
    std::function<void()> onMemoryShort;

    // Captures the region (global points) with the settings stored now, leaving out the windows of these
    // numbers. Completes when the capture runs. The recorder stays alive until then.
    void start(const Rect& region, const std::vector<std::int64_t>& excludeWindowNumbers,
               StartCompletion completion);

    // Ends the capture and hands out the frames; none for a recorder that does not run.
    void stop(StopCompletion completion);

    // Ends the capture without waiting for a last frame and hands out what there is: for the end of the
    // program, when no completion would come any more.
    std::vector<RecordedFrame> stopNow();

    // The nominal size of the frames kept so far; may wait briefly for the frame being kept.
    std::int64_t byteCount() const;

private:
    explicit ScreenRecorder(const Platform& platform);

    void startStream(const Screen& screen, const Rect& region,
                     const std::vector<std::int64_t>& excludeWindowNumbers, const ShareableContent& content,
                     StartCompletion completion);
    void prepareStore();
    void armAutoStop();
    void cancelAutoStop();
    std::vector<RecordedFrame> takeFrames();

    const Platform& platform;
    const std::shared_ptr<SerialQueue> frameQueue; // alone touches `store`
    std::shared_ptr<FrameStore> store;             // from the beginning; it needs the recorder's address
    std::shared_ptr<StreamDelegate> streamDelegate;
    std::shared_ptr<CaptureStream> stream; // set once the capture has begun
    std::shared_ptr<WorkItem> autoStopWork;
};

} // namespace clipwren
