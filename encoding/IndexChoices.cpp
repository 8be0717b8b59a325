#include "encoding/IndexChoices.h"

#include "encoding/GifWriter.h"

#include <cstddef>

namespace clipwren {

int useShortCodes(std::span<IndexChoice> indices, std::uint8_t transparency) {
    std::uint8_t needed = transparency;
    std::uint8_t offered = 0;
    for (const IndexChoice& index : indices) {
        needed |= index.first;
        offered |= index.second;
    }
    const int size = minimumCodeSize(needed + std::size_t{1});
    if (offered >> size == 0) return size;
    for (IndexChoice& index : indices)
        if (index.second >> size) index.second = index.first;
    return size;
}

} // namespace clipwren
