#include "encoding/LzwEncoder.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

namespace clipwren {

namespace {

constexpr int longestCode = 12;
constexpr std::uint32_t codeLimit = 1u << longestCode;
// Bits after which the yield of a full table is judged.
constexpr std::size_t judgedBits = 512 * longestCode;

// Looks at all of them, which takes less time than looking for the first.
bool hasChoices(std::span<const IndexChoice> indices) {
    std::uint8_t differences = 0;
    for (const IndexChoice& index : indices)
        differences |= index.first ^ index.second;
    return differences != 0;
}

} // namespace

std::vector<std::uint8_t> LzwEncoder::encode(std::span<const IndexChoice> indices, int minimumCodeSize) {
    begin(minimumCodeSize);
    if (hasChoices(indices))
        writeChoosing(indices);
    else
        writeDecided(indices);
    return end();
}

void LzwEncoder::writeChoosing(std::span<const IndexChoice> indices) {
    std::uint32_t previous = noCode;
    while (!indices.empty()) {
        std::size_t length = 0;
        const Match match = longestMatch(indices, previous, length);
        // The decoder makes a string of the code before and the first index of this one.
        if (previous != noCode && freeCode < codeLimit) insert(previous, match.begin);
        write(match.code);
        indices = indices.subspan(length);
        if (indices.empty()) return;
        previous = clearWhenStale(length) ? noCode : match.code;
    }
}

// Without choices the next string is known as soon as the code before is written.
void LzwEncoder::writeDecided(std::span<const IndexChoice> indices) {
    while (!indices.empty()) {
        std::size_t length = runLength(indices);
        std::uint32_t code = runCode(indices.front().first, length);
        std::size_t slot = 0;
        for (; length < indices.size(); ++length) {
            slot = slotOf(code, indices[length].first);
            if (slots[slot] == emptySlot) break;
            code = slots[slot] & (codeLimit - 1);
        }
        write(code);
        indices = indices.subspan(length);
        if (indices.empty()) return;
        const bool isCleared = clearWhenStale(length);
        if (!isCleared && freeCode < codeLimit) insertAt(slot, code, indices.front().first);
    }
}

void LzwEncoder::write(std::uint32_t code) {
    put(code);
    // The decoder reads longer codes as soon as its next string would need them.
    if (freeCode == 1u << codeBits && codeBits < longestCode) ++codeBits;
}

void LzwEncoder::begin(int minimumCodeSize) {
    pendingBits = 0;
    pendingCount = 0;
    clearCode = 1u << minimumCodeSize;
    clearTable();
    put(clearCode);
}

std::vector<std::uint8_t> LzwEncoder::end() {
    put(clearCode + 1);
    constexpr std::size_t wordBytes = sizeof(std::uint64_t);
    const std::size_t size = words.size() * wordBytes + static_cast<std::size_t>(pendingCount + 7) / 8;
    words.push_back(pendingBits);
    std::vector<std::uint8_t> bytes(words.size() * wordBytes);
    std::uint8_t* target = bytes.data();
    for (const std::uint64_t word : std::exchange(words, {}))
        for (std::size_t i = 0; i < wordBytes; ++i)
            *target++ = static_cast<std::uint8_t>(word >> (8 * i));
    bytes.resize(size);
    return bytes;
}

LzwEncoder::Match LzwEncoder::longestMatch(std::span<const IndexChoice> indices, std::uint32_t previous,
                                           std::size_t& length) const {
    Matches matches;
    const IndexChoice begin = indices.front();
    matches.add({begin.first, begin.first});
    if (begin.second != begin.first) matches.add({begin.second, begin.second});
    length = 1;
    for (;;) {
        if (matches.count == 1) followAlone(matches.items[0], indices, previous, length);
        if (length == indices.size()) break;
        const IndexChoice choice = indices[length];
        Matches longer;
        for (std::size_t i = 0; i < matches.count; ++i) {
            extend(matches.items[i], choice.first, previous, longer);
            if (choice.second != choice.first) extend(matches.items[i], choice.second, previous, longer);
        }
        if (longer.count == 0) break;
        matches = longer;
        ++length;
    }
    return matches.items[0];
}

void LzwEncoder::followAlone(Match& match, std::span<const IndexChoice> indices, std::uint32_t previous,
                             std::size_t& length) const {
    followRun(match, indices, length);
    for (; length < indices.size() && indices[length].first == indices[length].second; ++length) {
        const std::uint32_t code = extended(match, indices[length].first, previous);
        if (code == noCode) return;
        match.code = code;
    }
}

void LzwEncoder::followRun(Match& match, std::span<const IndexChoice> indices, std::size_t& length) const {
    const std::size_t longest = std::min(longestRun(match.begin), indices.size());
    if (length >= longest || match.code != runCode(match.begin, length)) return;
    std::size_t reached = length + repeatedSteps(indices.first(longest).subspan(length), match.begin);
    while (reached < longest && goesOnAlone(match.begin, reached, indices[reached]))
        ++reached;
    length = reached;
    match.code = runCode(match.begin, length);
}

// From a run of the index that is not the longest.
bool LzwEncoder::goesOnAlone(std::uint8_t index, std::size_t length, const IndexChoice& next) const {
    if (next.first != index) return false;
    return next.second == index || slots[slotOf(runCode(index, length), next.second)] == emptySlot;
}

void LzwEncoder::extend(const Match& match, std::uint8_t index, std::uint32_t previous,
                        Matches& longer) const {
    if (const std::uint32_t code = extended(match, index, previous); code != noCode)
        longer.add({code, match.begin});
}

std::uint32_t LzwEncoder::extended(const Match& match, std::uint8_t index, std::uint32_t previous) const {
    const std::uint32_t slot = slots[slotOf(match.code, index)];
    if (slot != emptySlot) return slot & (codeLimit - 1);
    // The string that writing this very code makes.
    return match.code == previous && index == match.begin && freeCode < codeLimit ? freeCode : noCode;
}

// The prefix comes into the hash last, by the quickest way: it is what has to be waited for.
std::size_t LzwEncoder::slotOf(std::uint32_t prefix, std::uint8_t index) const {
    const std::uint32_t key = prefix << 8 | index;
    std::uint32_t slot = index * 2654435761u >> (32 - hashBits) ^ prefix << (hashBits - longestCode);
    while (slots[slot] != emptySlot && slots[slot] >> longestCode != key)
        slot = (slot + 1) & ((1u << hashBits) - 1);
    return slot;
}

std::size_t LzwEncoder::runLength(std::span<const IndexChoice> indices) const {
    const std::uint8_t index = indices.front().first;
    // Few strings of a photograph are worth a look at the runs.
    if (indices.size() < runStep || !isRepeated(index, indices.first<runStep>())) return 1;
    const std::size_t longest = std::min(longestRun(index), indices.size());
    return std::max<std::size_t>(repeatedSteps(indices.first(longest), index), 1);
}

void LzwEncoder::clearTable() {
    slots.fill(emptySlot);
    for (std::vector<std::uint16_t>& codes : runs)
        codes.clear();
    std::iota(longestRunCodes.begin(), longestRunCodes.end(), std::uint16_t{0});
    freeCode = clearCode + 2;
    codeBits = std::bit_width(clearCode);
    whileFilling = {};
    sinceFull = {};
}

// A full table stays as long as it does no worse than a new one is likely to do while it fills. Returns
// whether the table begins anew.
bool LzwEncoder::clearWhenStale(std::size_t length) {
    const bool isFull = freeCode == codeLimit;
    Yield& yield = isFull ? sinceFull : whileFilling;
    yield.pixels += length;
    yield.bits += static_cast<std::size_t>(codeBits);
    if (sinceFull.bits < judgedBits) return false;
    const bool isStale = sinceFull.pixels * whileFilling.bits < whileFilling.pixels * sinceFull.bits;
    if (isStale) {
        put(clearCode);
        clearTable();
    }
    sinceFull = {};
    return isStale;
}

void LzwEncoder::insert(std::uint32_t prefix, std::uint8_t index) {
    const std::size_t slot = slotOf(prefix, index);
    // Another way to the same string may have made it already: then the new one is never found, nor needed.
    if (slots[slot] == emptySlot)
        insertAt(slot, prefix, index);
    else
        ++freeCode;
}

inline void LzwEncoder::insertAt(std::size_t slot, std::uint32_t prefix, std::uint8_t index) {
    const std::uint32_t code = freeCode++;
    slots[slot] = (prefix << 8 | index) << longestCode | code;
    if (prefix != longestRunCodes[index]) return;
    longestRunCodes[index] = static_cast<std::uint16_t>(code);
    runs[index].push_back(longestRunCodes[index]);
}

inline void LzwEncoder::put(std::uint32_t code) {
    constexpr int wordBits = 64;
    pendingBits |= std::uint64_t{code} << pendingCount;
    pendingCount += codeBits;
    if (pendingCount < wordBits) return;
    words.push_back(pendingBits);
    pendingCount -= wordBits;
    pendingBits = std::uint64_t{code} >> (codeBits - pendingCount);
}

} // namespace clipwren
