#include "encoding/IndexChoices.h"

#include "encoding/GifWriter.h"

#include <cstddef>

namespace clipwren {

int useShortCodes(std::span<IndexChoice> indices, std::uint8_t transparency) {
    std::uint8_t needed = transparency;
    for (const IndexChoice& index : indices)
        needed |= index.first;
    const int size = minimumCodeSize(needed + std::size_t{1});
    if (size == 8) return size;
    for (IndexChoice& index : indices)
        if (index.second >> size) index.second = index.first;
    return size;
}

} // namespace clipwren
