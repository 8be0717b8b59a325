#include "base/PackedImage.h"

#include "base/BlockCodec.h"
#include "base/BlockPool.h"

#include <utility>

namespace clipwren {

PackedImage ImagePacker::pack(const Image& image) {
    const auto blocks = image.allBlocks();
    const bool comparable = lastImage && lastImage->bounds() == image.bounds();
    PackedImage::Blocks packed;
    packed.reserve(blocks.size());
    for (std::size_t i = 0; i < blocks.size(); ++i)
        packed.push_back(comparable && blocks[i] == lastImage->allBlocks()[i] ? (*lastPacked->blocks)[i]
                                                                              : pack(*blocks[i]));
    bytes += static_cast<std::int64_t>(packed.size() * sizeof packed.front());
    lastImage = image;
    lastPacked = PackedImage({image.width(), image.height()},
                             std::make_shared<const PackedImage::Blocks>(std::move(packed)));
    return *lastPacked;
}

std::shared_ptr<const std::uint8_t> ImagePacker::pack(const Image::Block& block) {
    if (!piece || used + largestPackedBlock > piece->size()) {
        piece = std::allocate_shared_for_overwrite<Piece>(BlockAllocator<Piece>());
        used = 0;
    }
    std::uint8_t* packed = piece->data() + used;
    const std::size_t size = packBlock(block.data(), packed);
    used += size;
    bytes += static_cast<std::int64_t>(size);
    return {piece, packed};
}

Image ImageUnpacker::unpack(const PackedImage& packed) {
    const bool comparable = lastPacked && lastPacked->size == packed.size;
    std::vector<Image::BlockPointer> blocks;
    blocks.reserve(packed.blocks->size());
    for (std::size_t i = 0; i < packed.blocks->size(); ++i) {
        const auto& source = (*packed.blocks)[i];
        if (comparable && source == (*lastPacked->blocks)[i]) {
            blocks.push_back(lastImage->allBlocks()[i]);
            continue;
        }
        auto block = Image::makeBlock();
        unpackBlock(source.get(), block->data());
        blocks.push_back(std::move(block));
    }
    lastPacked = packed;
    lastImage = Image(packed.size, std::move(blocks));
    return *lastImage;
}

} // namespace clipwren
