#include "encoding/LzwEncoder.h"

#include <utility>

namespace clipwren {

namespace {

constexpr std::uint32_t codeLimit = 4096;

} // namespace

std::vector<std::uint8_t> LzwEncoder::encode(std::span<const std::uint8_t> indices, int minimumCodeSize) {
    begin(minimumCodeSize);
    if (!indices.empty()) {
        std::uint32_t string = indices.front();
        for (const std::uint8_t index : indices.subspan(1)) {
            const std::uint32_t key = string << 8 | index;
            std::uint32_t slot = (key * 2654435761u) >> (32 - hashBits);
            while (slots[slot] != emptySlot && slots[slot] >> 12 != key)
                slot = (slot + 1) & ((1u << hashBits) - 1);
            if (slots[slot] != emptySlot) {
                string = slots[slot] & (codeLimit - 1);
                continue;
            }
            if (nextCode < codeLimit) {
                slots[slot] = key << 12 | nextCode;
                putAndGrow(string);
            } else {
                put(string);
                put(clearCode);
                clearTable();
            }
            string = index;
        }
        putAndGrow(string);
    }
    end();
    return std::exchange(output, {});
}

void LzwEncoder::begin(int minimumCodeSize) {
    output.clear();
    pendingBits = 0;
    pendingCount = 0;
    clearCode = 1u << minimumCodeSize;
    clearTable();
    put(clearCode);
}

void LzwEncoder::clearTable() {
    slots.fill(emptySlot);
    nextCode = clearCode + 2;
    codeBits = 1;
    while (clearCode >> codeBits)
        ++codeBits;
}

void LzwEncoder::put(std::uint32_t code) {
    pendingBits |= std::uint64_t{code} << pendingCount;
    pendingCount += codeBits;
    while (pendingCount >= 8) {
        output.push_back(static_cast<std::uint8_t>(pendingBits));
        pendingBits >>= 8;
        pendingCount -= 8;
    }
}

// The decoder learns a string one code later than the encoder, and reads longer codes from then on: also the
// end code, though no string is made before it.
void LzwEncoder::putAndGrow(std::uint32_t code) {
    put(code);
    if (nextCode >= codeLimit) return;
    if (nextCode == 1u << codeBits) ++codeBits;
    ++nextCode;
}

void LzwEncoder::end() {
    put(clearCode + 1);
    if (pendingCount > 0) output.push_back(static_cast<std::uint8_t>(pendingBits));
}

} // namespace clipwren
