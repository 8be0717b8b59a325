#pragma once

#include "encoding/IndexChoices.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace clipwren {

// Compresses indices into the LZW codes of the GIF format: variable-length codes of up to twelve bits, from a
// clear code to the end code. Where a pixel may have either of two indices, the longer string decides. The
// encoder may be used again; it keeps only its table's memory.
class LzwEncoder {
public:
    // Every index is below 2 ^ minimumCodeSize, which is 2 to 8.
    std::vector<std::uint8_t> encode(std::span<const IndexChoice> indices, int minimumCodeSize);

private:
    // A string of the table that matches, and the index that it begins with.
    struct Match {
        std::uint32_t code = 0;
        std::uint8_t begin = 0;
    };
    // Matches of one length that are followed up at a time.
    static constexpr std::size_t mostMatches = 4;
    struct Matches {
        std::array<Match, mostMatches> items;
        std::size_t count = 0;
        void add(const Match& match) {
            if (count < mostMatches) items[count++] = match;
        }
    };

    // Strings by their prefix's code and last index, in an open hash table with so much room that hardly any
    // needs a second probe: guessing wrongly whether it does costs the processor more than a table that is
    // larger than its first cache.
    static constexpr int hashBits = 15;
    static constexpr std::uint32_t emptySlot = 0xFFFFFFFF;
    static constexpr std::uint32_t noCode = 0xFFFFFFFF;

    void begin(int minimumCodeSize);
    std::vector<std::uint8_t> end();

    void writeChoosing(std::span<const IndexChoice> indices);
    void writeDecided(std::span<const IndexChoice> indices);
    void write(std::uint32_t code);

    // The longest string of the table that the indices begin with, and its length. `previous` is the code
    // written before, of which the decoder is about to make another string.
    Match longestMatch(std::span<const IndexChoice> indices, std::uint32_t previous,
                       std::size_t& length) const;
    void extend(const Match& match, std::uint8_t index, std::uint32_t previous, Matches& longer) const;
    // As far as there is no choice.
    void followAlone(Match& match, std::span<const IndexChoice> indices, std::uint32_t previous,
                     std::size_t& length) const;
    // As far as the match is a run that no string but the next longer run goes on from.
    void followRun(Match& match, std::span<const IndexChoice> indices, std::size_t& length) const;
    bool goesOnAlone(std::uint8_t index, std::size_t length, const IndexChoice& next) const;
    std::uint32_t extended(const Match& match, std::uint8_t index, std::uint32_t previous) const;
    std::size_t slotOf(std::uint32_t prefix, std::uint8_t index) const;

    // Strings of one index over and over are found by their length instead of index by index: most of a
    // recording is such runs.
    std::size_t longestRun(std::uint8_t index) const { return runs[index].size() + 1; }
    std::uint32_t runCode(std::uint8_t index, std::size_t length) const {
        return length == 1 ? index : runs[index][length - 2];
    }
    // How many indices at the beginning are a run that the table holds, or a few less.
    std::size_t runLength(std::span<const IndexChoice> indices) const;

    void clearTable();
    bool clearWhenStale(std::size_t length);
    void insert(std::uint32_t prefix, std::uint8_t index);
    void insertAt(std::size_t slot, std::uint32_t prefix, std::uint8_t index);
    void put(std::uint32_t code);

    std::array<std::uint32_t, 1 << hashBits> slots; // key << 12 | code
    // The codes of each index's runs, from two of it on.
    std::array<std::vector<std::uint16_t>, 256> runs;
    // The code of each index's longest run, which every new string is compared with.
    std::array<std::uint16_t, 256> longestRunCodes{};
    std::vector<std::uint64_t> words; // of the codes written, the first in the lowest bits
    std::uint64_t pendingBits = 0;
    int pendingCount = 0;
    int codeBits = 0;
    std::uint32_t clearCode = 0;
    std::uint32_t freeCode = 0; // which the next new string gets

    // Pixels and the bits that they took.
    struct Yield {
        std::size_t pixels = 0;
        std::size_t bits = 0;
    };
    Yield whileFilling; // of the table
    Yield sinceFull;    // lately
};

} // namespace clipwren
