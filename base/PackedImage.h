#pragma once

#include "base/Geometry.h"
#include "base/Image.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace clipwren {

// A picture whose blocks are packed without loss: for keeping, not for looking at. A handle, like an Image.
class PackedImage {
private:
    friend class ImagePacker;
    friend class ImageUnpacker;

    using BlockPointer = std::shared_ptr<const std::uint8_t>;
    using BlockRow = std::vector<BlockPointer>;
    using RowPointer = std::shared_ptr<const BlockRow>;
    PackedImage(PixelSize size, std::vector<RowPointer> rows)
        : size(size),
          rows(std::make_shared<const std::vector<RowPointer>>(std::move(rows))) {}

    PixelSize size;
    std::shared_ptr<const std::vector<RowPointer>> rows;
};

// Packs one picture after another. What a picture shares with the one before is packed once and shared by
// the packed ones too. One thread at a time.
class ImagePacker {
public:
    PackedImage pack(const Image& image);

    // Lets go of the last picture, whose plain blocks take more memory than the packed ones: for when no
    // other one is coming soon. What the next one shares with it is then found by packing all of it.
    void rest();

    // About how much memory the pictures packed so far take, what they share counted once.
    std::int64_t byteCount() const { return bytes; }

private:
    // Packed blocks lie one after another in large pieces of memory, which stay while any of theirs is used.
    using Piece = std::array<std::uint8_t, 130'000>;
    PackedImage::RowPointer pack(std::size_t row, const Image::BlockRow& blocks);
    PackedImage::BlockPointer pack(const Image::Block& block, const std::uint8_t* last);

    std::shared_ptr<Piece> piece;
    std::size_t used = 0; // bytes of the piece
    std::int64_t bytes = 0;
    std::optional<Image> lastImage; // none after a rest
    std::optional<PackedImage> lastPacked;
};

// Unpacks one picture after another. Blocks that a picture shares with the one before are shared by the
// unpacked ones too, and cost nothing. Copies go on by themselves. One thread at a time.
class ImageUnpacker {
public:
    Image unpack(const PackedImage& packed);

private:
    static Image::BlockPointer unpack(const std::uint8_t* packed);

    std::optional<PackedImage> lastPacked;
    std::optional<Image> lastImage; // made from it
};

} // namespace clipwren
