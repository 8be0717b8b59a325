#include "encoding/Healer.h"

#include <algorithm>

namespace clipwren {

namespace {

// Steps of brightness a pixel and frame that go unnoticed in a picture that stands still.
constexpr double unnoticed = 0.0098;
constexpr double longestPatience = 0.25; // a pixel
// What healing a misfit takes; much of it is colour, and part of it stays. It is settled when it is drawn.
constexpr double stepsOfMisfit = 0.015;
constexpr std::uint32_t stillFrames = 3;
constexpr std::uint8_t mostAttempts = 3;
// The share of the picture that is drawn again in one frame.
constexpr std::size_t shareOfBlocks = 6;

// The mean misfit of a block's pixels, over red, green and blue together, that is worth to be healed.
constexpr double visibleMisfit = 3;

} // namespace

Healer::Healer(PixelSize size)
    : size(size),
      columns((size.width + Image::blockWidth - 1) / Image::blockWidth),
      blocks(static_cast<std::size_t>(columns) *
             static_cast<std::size_t>((size.height + Image::blockHeight - 1) / Image::blockHeight)) {}

std::vector<PixelRect> Healer::choose(const Image& previous, const Image& current) {
    const double area = static_cast<double>(current.bounds().area());
    patience = std::min(patience + unnoticed * area, longestPatience * area);
    ++frame;
    for (const PixelRect& changed : current.blocksDiffering(previous)) {
        blocks[blockAt(changed.x, changed.y)].changedIn = frame;
        blocks[blockAt(changed.x, changed.y)].attempts = 0;
    }
    expected.push_back(0);
    if (patience <= 0) return {};

    std::vector<std::size_t> due;
    for (std::size_t i = 0; i < blocks.size(); ++i)
        if (isDue(blocks[i])) due.push_back(i);
    const std::size_t count = std::min(due.size(), blocks.size() / shareOfBlocks + 1);
    std::partial_sort(due.begin(), due.begin() + static_cast<std::ptrdiff_t>(count), due.end(),
                      [&](std::size_t a, std::size_t b) { return blocks[a].misfit > blocks[b].misfit; });
    std::vector<PixelRect> result;
    for (std::size_t i = 0; i < count && patience > 0; ++i) {
        Block& block = blocks[due[i]];
        expected.back() += stepsOfMisfit * block.misfit;
        patience -= stepsOfMisfit * block.misfit;
        ++block.attempts;
        // Until it is drawn again it is not due.
        block.misfit = 0;
        result.push_back(rectOf(due[i]));
    }
    return result;
}

void Healer::drawn(std::uint32_t brightnessSteps) {
    patience += expected.front() - brightnessSteps;
    expected.pop_front();
}

bool Healer::isDue(const Block& block) const {
    return block.misfit >= visibleMisfit * Image::blockWidth * Image::blockHeight &&
           block.attempts < mostAttempts && frame - block.changedIn >= stillFrames;
}

PixelRect Healer::rectOf(std::size_t block) const {
    const int column = static_cast<int>(block) % columns;
    const int row = static_cast<int>(block) / columns;
    return PixelRect{column * Image::blockWidth, row * Image::blockHeight, Image::blockWidth,
                     Image::blockHeight}
        .intersection({0, 0, size.width, size.height});
}

} // namespace clipwren
