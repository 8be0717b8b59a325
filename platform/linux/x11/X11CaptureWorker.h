#pragma once

#include "platform/ScreenCapture.h"
#include "platform/linux/capture/EndSignal.h"
#include "platform/linux/capture/FrameComposer.h"
#include "platform/linux/capture/FramePacer.h"
#include "platform/linux/x11/X11CaptureLink.h"
#include "platform/linux/x11/X11DamageWatch.h"
#include "platform/linux/x11/X11PictureReader.h"
#include "platform/linux/x11/X11PointerWatch.h"
#include "platform/linux/x11/X11RegionPlace.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clipwren {

// What a capture thread does, from connecting to its last frame. It sleeps until the server reports drawing
// inside the region or a moving pointer, then reads just that.
class X11CaptureWorker {
public:
    struct Job {
        std::string displayName; // empty: the one that DISPLAY names
        std::uint32_t displayID = 0;
        StreamConfiguration configuration;
    };

    // Called on the worker's thread.
    class Client {
    public:
        virtual ~Client() = default;
        // Once, before the first sample.
        virtual void captureStarted() = 0;
        // Whether another sample may be handed over. While not, none is made, and what changes meanwhile
        // shows in the next one.
        virtual bool takesSample() = 0;
        virtual void deliver(StreamSample sample) = 0;
    };

    // The client and the signal outlive the worker.
    X11CaptureWorker(Job job, Client& client, EndSignal& end);
    ~X11CaptureWorker();

    // Captures until the signal asks to end: returns nothing then. Returns the error when it could not start
    // or had to end by itself.
    std::optional<PlatformError> run();

private:
    using Nanoseconds = X11CaptureLink::Nanoseconds;

    bool connect();
    void settle();
    void handleEvents(std::optional<Nanoseconds> since = {});
    void sleep();
    void rest();
    void followScreens();
    Nanoseconds nextLook() const;
    void look(bool isLast);
    bool readChanges(const std::vector<PixelRect>& drawn, bool hasAll, bool& insideRegion);
    bool readParts(const std::vector<PixelRect>& parts);
    X11PictureReader::Sink toComposer();
    bool takeAll();
    bool canReadAll() const;
    void fail(std::string text);
    bool mayGoOn() const;

    const Job job;
    Client& client;
    EndSignal& end;

    std::unique_ptr<X11CaptureLink> link;
    std::optional<X11RegionPlace> place;
    std::unique_ptr<X11DamageWatch> damage;
    std::unique_ptr<X11PointerWatch> pointer; // null when the cursor is not shown
    std::unique_ptr<X11PictureReader> reader;
    std::optional<FrameComposer> composer;
    FramePacer pacer;

    bool hasStarted = false;
    bool pictureIsStale = true; // all of it is to be read
    bool expectsAll = false;    // the last look found most of the region drawn anew
    // What it read when that was little, in root pixels: a caret comes again at its place. The next look
    // reads it along with the question what was drawn.
    std::vector<PixelRect> expectedParts;
    bool isAhead = false; // what the last look found had been drawn long before its time
    int refusals = 0;     // in a row
    Nanoseconds heldUntil = 0;
    Nanoseconds restsAt = INT64_MAX; // if nothing changes until then; never while it rests
    std::optional<PlatformError> failure;
};

} // namespace clipwren
