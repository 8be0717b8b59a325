#pragma once

#include "base/Image.h"
#include "encoding/ByteSink.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace clipwren {

// One picture of an animation and how long it is shown.
struct AnimationFrame {
    Image image;
    std::int64_t hundredths = 0; // at least 2
};

// The frames of an animation in their order. They are asked for one after another, each once; a picture whose
// size is not the first one's is cut off or filled up with black at its right and bottom.
struct Animation {
    std::size_t frameCount = 0;
    // Much like the frame's picture, and cheap: to learn the colours that frames have in common. Asked for in
    // order too, before all frames, but not for all.
    std::function<Image(std::size_t)> preview;
    std::function<AnimationFrame(std::size_t)> frame;
    // Told after each frame, with the count of those that are written by then. Need not be set.
    std::function<void(std::size_t)> written;
};

// Writes a GIF that plays the animation for ever: of each frame only what changed, in the smallest rectangle
// around it and with a palette of its own. There is one GIF image per frame, more only for a frame that is
// shown for over ten minutes. What is written does not depend on the number of threads.
//
// `threads` counts the caller's. False when the sink failed, or when the pictures are larger than the format
// can tell; there is at least one frame. Frames are asked for on the caller's thread.
bool writeAnimation(const Animation& animation, ByteSink& sink, unsigned threads);

// How many threads are worth while on this computer.
unsigned encodingThreads();

} // namespace clipwren
