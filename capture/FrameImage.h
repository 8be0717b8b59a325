#pragma once

#include "base/Image.h"
#include "base/PackedImage.h"

#include <utility>
#include <variant>

namespace clipwren {

// The picture of a kept frame: as it came from the screen, or packed.
class FrameImage {
public:
    FrameImage(Image image) : form(std::move(image)) {}
    FrameImage(PackedImage image) : form(std::move(image)) {}

    // The picture itself. Frames read in their order with one unpacker share what their pictures share.
    Image unpacked(ImageUnpacker& unpacker) const {
        if (const auto* image = std::get_if<Image>(&form)) return *image;
        return unpacker.unpack(std::get<PackedImage>(form));
    }
    Image unpacked() const {
        ImageUnpacker unpacker;
        return unpacked(unpacker);
    }

private:
    std::variant<Image, PackedImage> form;
};

} // namespace clipwren
