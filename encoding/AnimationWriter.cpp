#include "encoding/AnimationWriter.h"

#include "encoding/ColorIndexer.h"
#include "encoding/FrameChange.h"
#include "encoding/GifWriter.h"
#include "encoding/LzwEncoder.h"
#include "encoding/ShownPicture.h"
#include "encoding/WorkCrew.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace clipwren {

namespace {

// As many frames are worked on at a time: enough for the threads to find work, few enough to need little
// memory.
constexpr std::size_t framesAhead = 4;
// More would find nothing to do.
constexpr unsigned mostThreads = 4;

Image fitted(const Image& image, PixelSize size) {
    if (image.width() == size.width && image.height() == size.height) return image;
    std::vector<Pixel> pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height),
                              0xFF000000);
    image.copy(image.bounds().intersection({0, 0, size.width, size.height}), pixels.data(), size.width);
    return Image(PixelView{pixels.data(), size.width, size.height, size.width});
}

// One frame on its way through the stages.
struct FrameJob {
    FrameJob(std::optional<Image> previous, Image image, std::int64_t hundredths)
        : previous(std::move(previous)),
          image(std::move(image)) {
        result.hundredths = hundredths;
    }

    std::optional<Image> previous;
    Image image;
    FrameChange change;
    IndexedColors indexed;
    std::vector<std::uint8_t> indices;
    GifFrame result;
    std::shared_ptr<WorkCrew::Task> task; // of the stage that was begun last
};

// What depends on the two pictures alone: which pixels change and which colours they get.
void chooseColors(FrameJob& job) {
    job.change = job.previous ? changeSince(*job.previous, job.image) : wholeFrame(job.image);
    if (job.change.isEmpty()) return;
    // Later frames keep an index for what stays.
    const std::size_t limit = job.previous ? largestPalette - 1 : largestPalette;
    job.indexed = indexColors(job.change.colors, limit);
}

// What depends on all frames before: which pixels already look as they should.
void drawChange(FrameJob& job, ShownPicture& shown) {
    GifFrame& result = job.result;
    const bool isFirst = !job.previous;
    if (job.change.isEmpty()) {
        // A frame needs an image, if only to have its delay.
        result.rect = {0, 0, 1, 1};
        result.palette = {0};
        result.transparency = 0;
        job.indices = {0};
        return;
    }
    const auto transparent = static_cast<std::uint8_t>(job.indexed.palette.size());
    job.indices = shown.draw(job.change, job.indexed, transparent);
    result.rect = job.change.rect;
    result.palette = std::move(job.indexed.palette);
    if (!isFirst) {
        result.palette.push_back(0);
        result.transparency = transparent;
    }
    job.change = {};
    job.indexed = {};
}

void compress(FrameJob& job) {
    job.result.data = LzwEncoder().encode(job.indices, minimumCodeSize(job.result.palette.size()));
    job.indices = {};
}

class AnimationEncoder {
public:
    AnimationEncoder(const Animation& animation, ByteSink& sink, unsigned threads)
        : animation(animation),
          sink(sink),
          writer(sink),
          crew(threads > 1 ? threads - 1 : 0) {}

    bool run() {
        AnimationFrame first = animation.frame(0);
        size = {first.image.width(), first.image.height()};
        if (std::max(size.width, size.height) > GifWriter::longestSide) return false;
        ShownPicture shown(size);
        writer.begin(size);
        begin(std::move(first));
        for (std::size_t i = 0; i < animation.frameCount && sink.good(); ++i) {
            while (begun < animation.frameCount && choosing.size() < framesAhead)
                begin(animation.frame(begun));
            drawNext(shown);
            while (compressing.size() >= framesAhead)
                writeNext();
        }
        while (!compressing.empty() && sink.good())
            writeNext();
        writer.end();
        return sink.good();
    }

private:
    void begin(AnimationFrame frame) {
        Image image = fitted(frame.image, size);
        auto job = std::make_unique<FrameJob>(last, image, frame.hundredths);
        last = std::move(image);
        ++begun;
        job->task = crew.start([job = job.get()] { chooseColors(*job); });
        choosing.push_back(std::move(job));
    }

    void drawNext(ShownPicture& shown) {
        std::unique_ptr<FrameJob> job = take(choosing);
        drawChange(*job, shown);
        job->task = crew.start([job = job.get()] { compress(*job); });
        compressing.push_back(std::move(job));
    }

    void writeNext() { writer.frame(take(compressing)->result); }

    // The first job of the queue, its stage done.
    std::unique_ptr<FrameJob> take(std::deque<std::unique_ptr<FrameJob>>& queue) {
        crew.await(*queue.front()->task);
        std::unique_ptr<FrameJob> job = std::move(queue.front());
        queue.pop_front();
        return job;
    }

    const Animation& animation;
    ByteSink& sink;
    GifWriter writer;
    PixelSize size;
    std::optional<Image> last;
    std::size_t begun = 0;
    std::deque<std::unique_ptr<FrameJob>> choosing;
    std::deque<std::unique_ptr<FrameJob>> compressing;
    // Ends before the jobs that its tasks work on.
    WorkCrew crew;
};

} // namespace

bool writeAnimation(const Animation& animation, ByteSink& sink, unsigned threads) {
    return AnimationEncoder(animation, sink, threads).run();
}

unsigned encodingThreads() { return std::clamp(std::thread::hardware_concurrency(), 1u, mostThreads); }

} // namespace clipwren
