#include "tests/support/RandomAnimation.h"

#include "encoding/FrameDelays.h"
#include "encoding/RecordedAnimation.h"
#include "tests/support/Choices.h"
#include "tests/support/DecodedGif.h"
#include "tests/support/MemorySink.h"
#include "tests/support/TestPicture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>
#include <vector>

namespace clipwren {

namespace {

PixelSize chooseSize(Choices& choices) {
    switch (choices.byte() % 4) {
    case 0: return {1 + choices.below(8), 1 + choices.below(8)};
    case 1: return {1 + choices.below(4096), 1 + choices.below(16)};
    case 2: return {1 + choices.below(16), 1 + choices.below(2000)};
    default: return {1 + choices.below(320), 1 + choices.below(200)};
    }
}

// Far from any recording as times may be, the choice itself stays within the number's range.
std::int64_t movedBy(std::int64_t value, std::int64_t distance) {
    constexpr std::int64_t reach = std::numeric_limits<std::int64_t>::max() - 1'000'000;
    return std::clamp(value, -reach, reach) + distance;
}

MediaTime chooseTime(Choices& choices, const MediaTime& before) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    switch (choices.byte() % 12) {
    case 0: return before;
    case 1: return {movedBy(before.value, -choices.below(5000)), before.timescale};
    case 2: return {0, 0};
    case 3: return {largest, 1};
    case 4: return {-largest, 1 + choices.below(3)};
    case 5: return {choices.below(60'000), 7};
    case 6: return {movedBy(before.value, 700'000 + choices.below(60'000)), 1000};
    default: return {movedBy(before.value, choices.below(300)), 1000};
    }
}

PixelRect chooseRect(Choices& choices, PixelSize size) {
    const int x = choices.below(size.width);
    const int y = choices.below(size.height);
    return {x, y, 1 + choices.below(size.width - x), 1 + choices.below(size.height - y)};
}

void change(TestPicture& picture, Choices& choices, bool fewColors) {
    static constexpr std::array<Pixel, 4> flat{0xFF000000, 0xFFFFFFFF, 0xFF336699, 0xFFFAFAFA};
    const PixelRect rect = chooseRect(choices, {picture.width, picture.height});
    if (fewColors || choices.byte() % 2) {
        const Pixel color = fewColors ? flat[choices.byte() % flat.size()] : choices.color();
        picture.fill(rect, color);
        return;
    }
    std::mt19937 random(choices.byte());
    for (int y = rect.y; y < rect.maxY(); ++y)
        for (int x = rect.x; x < rect.maxX(); ++x)
            picture.at(x, y) = 0xFF000000 | (random() & 0xFFFFFF);
}

struct RandomRecording {
    PixelSize size;
    bool fewColors = false;
    std::vector<RecordedFrame> frames;
    std::vector<std::vector<Pixel>> pictures;
};

RandomRecording choose(Choices& choices) {
    RandomRecording recording;
    const PixelSize size = chooseSize(choices);
    recording.size = size;
    recording.fewColors = choices.byte() % 2;
    TestPicture picture(size.width, size.height, 0xFF336699);
    MediaTime time{0, 1000};
    const int count = 1 + choices.below(12);
    std::optional<Image> last;
    ImagePacker packer;
    for (int i = 0; i < count; ++i) {
        for (unsigned changes = choices.byte() % 4; changes > 0; --changes)
            change(picture, choices, recording.fewColors);
        recording.pictures.push_back(picture.colors());
        last = last ? picture.imageAfter(*last) : picture.image();
        // Most come packed, as from a recording, and some as they are.
        recording.frames.push_back({i % 3 == 2 ? FrameImage(*last) : FrameImage(packer.pack(*last)), time});
        time = chooseTime(choices, time);
    }
    return recording;
}

std::string checkDelays(const RandomRecording& recording, const DecodedGif& gif,
                        std::vector<std::size_t>& lastOf) {
    DelayRounder rounder;
    std::size_t next = 0;
    for (std::size_t i = 0; i < recording.frames.size(); ++i) {
        std::optional<MediaTime> following;
        if (i + 1 < recording.frames.size()) following = recording.frames[i + 1].presentationTime;
        std::int64_t rest = rounder.hundredths(frameDelay(recording.frames[i].presentationTime, following));
        while (rest > 0) {
            if (next == gif.frames.size()) return "too few images";
            if (gif.frames[next].hundredths < 2) return "a delay below two hundredths";
            rest -= gif.frames[next++].hundredths;
        }
        if (rest < 0) return "a delay that is not the prescribed one";
        lastOf.push_back(next - 1);
    }
    return next == gif.frames.size() ? "" : "too many images";
}

std::string checkPixels(const RandomRecording& recording, std::size_t frame,
                        const std::vector<Pixel>& shown) {
    const std::vector<Pixel>& wanted = recording.pictures[frame];
    double sum = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (shown[i] > 0xFFFFFF) return "a pixel that was never drawn";
        if (recording.fewColors && shown[i] != wanted[i]) return "another colour, though there are few";
        for (const int shift : {0, 8, 16})
            sum += std::abs(static_cast<int>(shown[i] >> shift & 0xFF) -
                            static_cast<int>(wanted[i] >> shift & 0xFF));
    }
    return sum / static_cast<double>(wanted.size()) > 90 ? "colours far off" : "";
}

} // namespace

std::string checkRandomAnimation(std::span<const std::uint8_t> bytes) {
    Choices choices(bytes);
    const RandomRecording recording = choose(choices);
    MemorySink sink;
    if (!writeAnimation(recordedAnimation(recording.frames, nullptr), sink, 1 + choices.byte() % 3))
        return "not written";
    const DecodedGif gif = DecodedGif::read(sink.bytes);
    if (!gif.error.empty()) return gif.error;
    if (gif.loopCount != 0) return "does not loop for ever";
    if (gif.size != recording.size) return "another size";

    std::vector<std::size_t> lastOf;
    if (std::string wrong = checkDelays(recording, gif, lastOf); !wrong.empty()) return wrong;
    for (std::size_t i = 0; i < recording.frames.size(); ++i)
        if (std::string wrong = checkPixels(recording, i, gif.frames[lastOf[i]].shown); !wrong.empty())
            return wrong + " in frame " + std::to_string(i);
    return "";
}

} // namespace clipwren
