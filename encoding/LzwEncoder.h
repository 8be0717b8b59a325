#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace clipwren {

// Compresses indices into the LZW codes of the GIF format: variable-length codes of up to twelve bits, from a
// clear code to the end code. The encoder may be used again; it keeps only its table's memory.
class LzwEncoder {
public:
    // Every index is below 2 ^ minimumCodeSize, which is 2 to 8.
    std::vector<std::uint8_t> encode(std::span<const std::uint8_t> indices, int minimumCodeSize);

private:
    // Strings by their prefix's code and last index, in an open hash table with room enough that probes are
    // short.
    static constexpr int hashBits = 14;
    static constexpr std::uint32_t emptySlot = 0xFFFFFFFF;

    void begin(int minimumCodeSize);
    void clearTable();
    void put(std::uint32_t code);
    void putAndGrow(std::uint32_t code);
    void end();

    std::array<std::uint32_t, 1 << hashBits> slots{}; // key << 12 | code
    std::vector<std::uint8_t> output;
    std::uint64_t pendingBits = 0;
    int pendingCount = 0;
    int codeBits = 0;
    std::uint32_t clearCode = 0;
    std::uint32_t nextCode = 0; // which the next new string gets
};

} // namespace clipwren
