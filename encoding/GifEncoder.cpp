#include "encoding/GifEncoder.h"

#include "encoding/AnimationWriter.h"
#include "encoding/FileSink.h"
#include "encoding/FrameDelays.h"
#include "encoding/OutputFolder.h"
#include "encoding/Watermark.h"

#include <algorithm>
#include <memory>
#include <thread>

namespace clipwren {

namespace {

// More would find nothing to do: frames follow each other.
constexpr unsigned mostThreads = 4;

AnimationFrame stamped(std::span<const RecordedFrame> frames, std::size_t i, DelayRounder& delays,
                       Canvases& canvases) {
    const RecordedFrame& frame = frames[i];
    std::optional<MediaTime> next;
    if (i + 1 < frames.size()) next = frames[i + 1].presentationTime;
    return {
        .image =
            applyWatermark(frame.image, pulsePhase(frame.presentationTime), canvases).value_or(frame.image),
        .hundredths = delays.hundredths(frameDelay(frame.presentationTime, next))};
}

} // namespace

std::filesystem::path GifEncoder::outputDirectory(const Folders& folders) { return outputFolder(folders); }

Expected<std::filesystem::path, GifEncoderError>
GifEncoder::encode(std::span<const RecordedFrame> frames, const Folders& folders, Canvases& canvases) {
    if (frames.empty()) return Unexpected{GifEncoderError::noFrames};
    const std::string name = recordingFileName(folders.now());
    const std::filesystem::path path = outputDirectory(folders) / name;

    const std::unique_ptr<FileSink> file = FileSink::create(path);
    if (!file) return Unexpected{GifEncoderError::destinationFailure};
    DelayRounder delays;
    const Animation animation{.frameCount = frames.size(),
                              .frame = [&](std::size_t i) { return stamped(frames, i, delays, canvases); }};
    const bool written =
        writeAnimation(animation, *file, std::clamp(std::thread::hardware_concurrency(), 1u, mostThreads));
    const bool closed = file->close();
    if (!written || !closed) return Unexpected{GifEncoderError::finalizeFailure};
    return path;
}

} // namespace clipwren
