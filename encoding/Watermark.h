#pragma once

#include "base/Geometry.h"
#include "base/Image.h"
#include "platform/Canvas.h"

#include <optional>
#include <string_view>

namespace clipwren {

// The product's address, as the badge shows it.
constexpr std::string_view watermarkText = "clipwren.app";

// Where the badge's parts lie in a picture: in its pixels, origin at the bottom left, y upward.
struct WatermarkLayout {
    Font font;
    double dotDiameter = 0; // before the pulse
    double gap = 0;
    double verticalInset = 0;
    double horizontalInset = 0;
    double margin = 0;
    Rect pill;
    Point dotCenter;
    Point textOrigin;
};

// What the pulse makes of the dot.
struct WatermarkPulse {
    double diameterFactor = 1;
    double alpha = 1;
};

// The face of the badge on a picture of that height.
Font watermarkFont(int imageHeight);
// `textSize` is the badge text's in that face.
WatermarkLayout watermarkLayout(PixelSize image, Size textSize);
WatermarkPulse watermarkPulse(double phase);

// A copy of the picture with the badge in its bottom right corner, clipped where the picture is too small,
// and every block outside the badge shared. `pulsePhase` counts seconds. Nothing when no canvas can be made.
std::optional<Image> applyWatermark(const Image& image, double pulsePhase, Canvases& canvases);

} // namespace clipwren
