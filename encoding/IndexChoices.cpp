#include "encoding/IndexChoices.h"

#include "encoding/GifWriter.h"

#include <algorithm>
#include <cstddef>

namespace clipwren {

namespace {

// Codes for short rows cost more than drawing them with what surrounds them.
constexpr std::size_t longestRedrawn = 16;

} // namespace

void decideStaying(std::span<IndexChoice> indices, std::uint8_t transparency) {
    const auto stays = [&](const IndexChoice& index) { return index.first == transparency; };
    for (auto begin = indices.begin(); begin != indices.end();) {
        const auto end = std::find_if_not(begin, indices.end(), stays);
        const bool redrawn = static_cast<std::size_t>(end - begin) <= longestRedrawn;
        for (auto index = begin; index != end; ++index)
            (redrawn ? index->first : index->second) = redrawn ? index->second : index->first;
        begin = std::find_if(end, indices.end(), stays);
    }
}

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
