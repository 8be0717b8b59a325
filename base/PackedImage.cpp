#include "base/PackedImage.h"

#include "base/BlockCodec.h"
#include "base/BlockPool.h"

#include <cstring>
#include <utility>

namespace clipwren {

PackedImage ImagePacker::pack(const Image& image) {
    const PixelSize size{image.width(), image.height()};
    if (lastPacked && lastPacked->size != size) {
        lastImage.reset();
        lastPacked.reset();
    }
    const auto rows = image.allRows();
    std::vector<PackedImage::RowPointer> packed;
    packed.reserve(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row)
        packed.push_back(lastImage && rows[row] == lastImage->allRows()[row] ? (*lastPacked->rows)[row]
                                                                             : pack(row, *rows[row]));
    bytes += static_cast<std::int64_t>(packed.size() * sizeof packed.front());
    lastImage = image;
    lastPacked = PackedImage(size, std::move(packed));
    return *lastPacked;
}

PackedImage::RowPointer ImagePacker::pack(std::size_t row, const Image::BlockRow& blocks) {
    PackedImage::RowPointer last = lastPacked ? (*lastPacked->rows)[row] : nullptr;
    PackedImage::BlockRow packed;
    packed.reserve(blocks.size());
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const bool isSame = lastImage && blocks[i] == (*lastImage->allRows()[row])[i];
        auto block = isSame ? (*last)[i] : pack(*blocks[i], last ? (*last)[i].get() : nullptr);
        if (!block) block = (*last)[i];
        packed.push_back(std::move(block));
    }
    if (last && packed == *last) return last;
    bytes += static_cast<std::int64_t>(packed.size() * sizeof packed.front());
    return std::make_shared<const PackedImage::BlockRow>(std::move(packed));
}

// None where it packs to the same as the last one there. A packed block tells where it ends, and there is
// room for the largest behind every one.
PackedImage::BlockPointer ImagePacker::pack(const Image::Block& block, const std::uint8_t* last) {
    if (!piece || used + largestPackedBlock > piece->size()) {
        piece = std::allocate_shared_for_overwrite<Piece>(BlockAllocator<Piece>());
        used = 0;
    }
    std::uint8_t* packed = piece->data() + used;
    const std::size_t size = packBlock(block.data(), packed);
    if (last && std::memcmp(packed, last, size) == 0) return nullptr;
    used += size;
    bytes += static_cast<std::int64_t>(size);
    return {piece, packed};
}

void ImagePacker::rest() {
    lastImage.reset();
    BlockPool::releaseSpares();
}

Image ImageUnpacker::unpack(const PackedImage& packed) {
    const bool comparable = lastPacked && lastPacked->size == packed.size;
    std::vector<Image::RowPointer> rows;
    rows.reserve(packed.rows->size());
    for (std::size_t row = 0; row < packed.rows->size(); ++row) {
        const PackedImage::RowPointer& source = (*packed.rows)[row];
        const PackedImage::RowPointer last = comparable ? (*lastPacked->rows)[row] : nullptr;
        if (source == last) {
            rows.push_back(lastImage->allRows()[row]);
            continue;
        }
        Image::BlockRow blocks;
        blocks.reserve(source->size());
        for (std::size_t i = 0; i < source->size(); ++i)
            blocks.push_back(last && (*source)[i] == (*last)[i] ? (*lastImage->allRows()[row])[i]
                                                                : unpack((*source)[i].get()));
        rows.push_back(std::make_shared<const Image::BlockRow>(std::move(blocks)));
    }
    lastPacked = packed;
    lastImage = Image(packed.size, std::move(rows));
    return *lastImage;
}

Image::BlockPointer ImageUnpacker::unpack(const std::uint8_t* packed) {
    auto block = Image::makeBlock();
    unpackBlock(packed, block->data());
    return block;
}

} // namespace clipwren
