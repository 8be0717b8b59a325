#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace clipwren {

// One of two indices, whichever compresses better; equal when there is no choice.
struct IndexChoice {
    std::uint8_t first = 0;
    std::uint8_t second = 0;
    friend bool operator==(const IndexChoice&, const IndexChoice&) = default;
};

// Shorter codes do where only the first entries of a palette are used: drops the choices that would need
// longer ones; `transparency` is an index too. Returns the LZW minimum code size for the image.
int useShortCodes(std::span<IndexChoice> indices, std::uint8_t transparency);

// Runs are compared a word at a time.
constexpr std::size_t runStep = sizeof(std::uint64_t) / sizeof(IndexChoice);

// Whether all of a step are this index without a choice.
inline bool isRepeated(std::uint8_t index, std::span<const IndexChoice, runStep> step) {
    std::uint64_t word = 0;
    std::memcpy(&word, step.data(), sizeof word);
    return word == index * 0x0101010101010101u;
}

// How many at the beginning are, in whole steps.
inline std::size_t repeatedSteps(std::span<const IndexChoice> indices, std::uint8_t index) {
    std::size_t length = 0;
    while (length + runStep <= indices.size() && isRepeated(index, indices.subspan(length).first<runStep>()))
        length += runStep;
    return length;
}

} // namespace clipwren
