#include "capture/FrameStore.h"

#include "base/CheckedArithmetic.h"

#include <new>
#include <utility>

namespace clipwren {

namespace {

// Packing all of a picture again must be rare.
constexpr double secondsUntilRest = 5;

} // namespace

FrameStore::FrameStore(MemoryWatch watch, std::function<bool()> isBehind)
    : watch(std::move(watch)),
      isBehind(std::move(isBehind)) {}

void FrameStore::didOutputSample(CaptureStream&, const StreamSample& sample, StreamOutputType type) {
    if (type != StreamOutputType::screen || !sample.isValid) return;
    if (sample.status == static_cast<int>(FrameStatus::idle) && startPTS &&
        (sample.presentationTime - lastPTS).seconds() >= secondsUntilRest)
        packer.rest();
    if (sample.status != static_cast<int>(FrameStatus::complete) || !sample.image) return;

    const MediaTime time = startPTS ? sample.presentationTime - *startPTS : MediaTime::zero();
    try {
        keep(*sample.image, time);
    } catch (const std::bad_alloc&) {
        watch.ranOut();
        return;
    }
    if (!startPTS) startPTS = sample.presentationTime;
    lastPTS = sample.presentationTime;
    byteCountTotal =
        checkedAdd(byteCountTotal, checkedMultiply(sample.image->bytesPerRow(), sample.image->height()));
}

void FrameStore::keep(const Image& image, const MediaTime& time) {
    const std::int64_t before = packer.byteCount();
    const bool isPacked = !isBehind();
    frames.push_back({isPacked ? FrameImage(packer.pack(image)) : FrameImage(image), time});
    watch.kept({image.width(), image.height()},
               isPacked ? packer.byteCount() - before : image.bytesPerRow() * image.height(), time);
}

std::vector<RecordedFrame> FrameStore::take() {
    startPTS.reset();
    byteCountTotal = 0;
    packer = {};
    return std::exchange(frames, {});
}

} // namespace clipwren
