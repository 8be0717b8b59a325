#include "encoding/AnimationWriter.h"

#include "encoding/ColorIndexer.h"
#include "encoding/CommonPalette.h"
#include "encoding/FrameChange.h"
#include "encoding/GifWriter.h"
#include "encoding/GradientDither.h"
#include "encoding/IndexChoices.h"
#include "encoding/LzwEncoder.h"
#include "encoding/ShownPicture.h"
#include "encoding/WorkCrew.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <thread>
#include <utility>
#include <vector>

namespace clipwren {

namespace {

// As many frames are worked on at a time: enough for the threads to find work, few enough to need little
// memory.
constexpr std::size_t framesAhead = 3;
// The index that leaves a pixel as it is, in images with the shared palette.
constexpr std::uint8_t sharedTransparency = 0;
// So many pixels of a frame may be tried out as to whether staying as they are compresses best, and many more
// after frames that did not need it.
constexpr std::size_t triedPixels = 9'000;
constexpr std::size_t mostTriedPixels = 20 * triedPixels;
// Frames from one preview to the next while much moves.
constexpr std::size_t longestStep = 16;
// More would find nothing to do.
constexpr unsigned mostThreads = 4;

Image fitted(Image image, PixelSize size) {
    if (image.width() == size.width && image.height() == size.height) return image;
    std::vector<Pixel> pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height),
                              0xFF000000);
    image.copy(image.bounds().intersection({0, 0, size.width, size.height}), pixels.data(), size.width);
    return Image(PixelView{pixels.data(), size.width, size.height, size.width});
}

std::size_t pixelCount(const Image& image) { return static_cast<std::size_t>(image.bounds().area()); }

// One frame on its way through the stages.
struct FrameJob {
    FrameJob(std::optional<Image> previous, Image image, std::int64_t hundredths)
        : isFirst(!previous),
          pictures(Pictures{std::move(previous), std::move(image)}) {
        result.hundredths = hundredths;
    }

    struct Pictures {
        std::optional<Image> previous;
        Image image;
    };

    bool isFirst;
    std::optional<Pictures> pictures; // until the colours are chosen
    std::vector<PixelRect> healing;
    FrameChange change;
    IndexedColors indexed;
    std::vector<IndexChoice> indices;
    GifFrame result;
    std::shared_ptr<WorkCrew::Task> task; // of the stage that was begun last
};

// What depends on the two pictures alone: which pixels change and which colours they get.
void chooseColors(FrameJob& job, const ColorIndexer& indexer) {
    const auto [previous, image] = *std::exchange(job.pictures, std::nullopt);
    job.change = previous ? changeSince(*previous, image) : wholeFrame(image);
    job.change.addHealing(image, job.healing);
    if (job.change.isEmpty()) return;
    const bool mostMoves = previous && job.change.isMostOf(pixelCount(image));
    // One index is for what stays.
    job.indexed =
        indexer.index(job.change.colors, largestPalette - 1, mostMoves ? Precision::coarse : Precision::fine);
    // Bands that move or hardly differ are not seen; mixing would only cost bytes.
    if (!job.indexed.palette.empty() && !mostMoves && !job.indexed.allNear)
        ditherGradients(image, job.change, job.indexed.palette, job.indexed.indices);
}

// A frame needs an image, if only to have its delay.
void leaveAll(FrameJob& job) {
    job.result.rect = {0, 0, 1, 1};
    job.result.transparency = sharedTransparency;
    job.indices = {{sharedTransparency, sharedTransparency}};
}

// What depends on all frames before: which pixels already look as they should.
void drawChange(FrameJob& job, ShownPicture& shown, const Palette& shared, Staying staying, Healer& healer) {
    if (job.change.isEmpty()) return leaveAll(job);
    GifFrame& result = job.result;
    result.rect = job.change.rect;
    const bool usesShared = job.indexed.palette.empty();
    if (usesShared) {
        job.indices =
            shown.draw(job.change, job.indexed.indices, shared, sharedTransparency, staying, healer);
        result.transparency = sharedTransparency;
    } else {
        const auto transparent = static_cast<std::uint8_t>(job.indexed.palette.size());
        job.indices =
            shown.draw(job.change, job.indexed.indices, job.indexed.palette, transparent, staying, healer);
        result.palette = std::move(job.indexed.palette);
        result.palette.push_back(0);
        result.transparency = transparent;
    }
    job.change = {};
    job.indexed = {};
}

void compress(FrameJob& job) {
    job.result.minimumCodeSize = useShortCodes(job.indices, *job.result.transparency);
    job.result.data = LzwEncoder().encode(job.indices, job.result.minimumCodeSize);
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
        shared = commonPalette();
        indexer.emplace(shared);
        healer.emplace(size);
        writer.begin(size, shared);
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
    // The first entry leaves pixels as they are.
    Palette commonPalette() const {
        CommonPalette common;
        Image previous = animation.preview(0);
        std::size_t previousFrame = 0;
        std::size_t step = 1;
        for (std::size_t i = 1; i < animation.frameCount; i += step) {
            if (previousFrame + 1 < i) previous = animation.preview(i - 1);
            Image image = animation.preview(i);
            const bool isQuiet = previous.bounds() == image.bounds() && common.consider(previous, image);
            // Where much moves quiet frames are rare, and previews take time.
            step = isQuiet ? 1 : std::min(2 * step, longestStep);
            previous = std::move(image);
            previousFrame = i;
        }
        Palette palette = common.choose(largestPalette - 1);
        palette.insert(palette.begin(), palette.front());
        return palette;
    }

    void begin(AnimationFrame frame) {
        Image image = fitted(std::move(frame.image), size);
        auto job = std::make_unique<FrameJob>(last, image, frame.hundredths);
        if (last) job->healing = healer->choose(*last, image);
        last = std::move(image);
        ++begun;
        job->task = crew.start([this, job = job.get()] { chooseColors(*job, *indexer); });
        choosing.push_back(std::move(job));
    }

    void drawNext(ShownPicture& shown) {
        std::unique_ptr<FrameJob> job = take(choosing);
        drawChange(*job, shown, shared, chooseStaying(*job), *healer);
        if (!job->isFirst) healer->drawn(job->healing.empty() ? 0 : shown.lastHealingSteps());
        job->task = crew.start([job = job.get()] { compress(*job); });
        compressing.push_back(std::move(job));
    }

    Staying chooseStaying(const FrameJob& job) {
        // In photographs equal entries are rare, and stand out from what surrounds them.
        if (job.indexed.manyColors) return Staying::alone;
        const bool hasTime = spendTrials(static_cast<std::size_t>(job.change.rect.area()));
        return hasTime ? Staying::asCompressed : Staying::exceptBriefly;
    }

    // Whether there is time to try out how so many pixels compress best; then it is taken off. For small
    // changes there always is; where much moves it wins little.
    bool spendTrials(std::size_t pixels) {
        trials = std::min(trials + triedPixels, mostTriedPixels);
        if (pixels > trials) return false;
        trials -= pixels;
        return true;
    }

    void writeNext() {
        writer.frame(take(compressing)->result);
        ++framesWritten;
        if (animation.written) animation.written(framesWritten);
    }

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
    Palette shared;
    std::optional<ColorIndexer> indexer;
    std::optional<Healer> healer;
    std::optional<Image> last;
    std::size_t begun = 0;
    std::size_t framesWritten = 0;
    std::size_t trials = 0; // pixels
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
