#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

// Rows of small numbers stored with no more bits than they need: the innermost loops of the block codec.

namespace clipwren::bitgroups {

inline constexpr int groupSize = 16; // numbers that have the same count of bits

// The same bit of eight numbers as the bits of one, by a multiplication that moves each to its place.
inline std::uint8_t gatheredBits(const std::uint8_t* numbers, int shift) {
    std::uint64_t bytes = 0;
    for (int i = 0; i < 8; ++i)
        bytes |= std::uint64_t{numbers[i]} << 8 * i;
    return static_cast<std::uint8_t>((bytes >> shift & 0x0101010101010101) * 0x0102040810204080 >> 56);
}

// Appends the lowest `bits` bits of 16 numbers, in parts of four, two and one bits.
template <int bits>
std::uint8_t* putBits(const std::uint8_t* numbers, std::uint8_t* to) {
    int shift = 0;
    if constexpr (bits >= 8) {
        std::memcpy(to, numbers, groupSize);
        return to + groupSize;
    }
    if constexpr ((bits & 4) != 0) {
        for (int i = 0; i < 8; ++i)
            to[i] =
                static_cast<std::uint8_t>((numbers[i] >> shift & 15) | (numbers[i + 8] >> shift & 15) << 4);
        to += 8;
        shift += 4;
    }
    if constexpr ((bits & 2) != 0) {
        for (int i = 0; i < 4; ++i)
            to[i] = static_cast<std::uint8_t>((numbers[i] >> shift & 3) | (numbers[i + 4] >> shift & 3) << 2 |
                                              (numbers[i + 8] >> shift & 3) << 4 |
                                              (numbers[i + 12] >> shift & 3) << 6);
        to += 4;
        shift += 2;
    }
    if constexpr ((bits & 1) != 0) {
        to[0] = gatheredBits(numbers, shift);
        to[1] = gatheredBits(numbers + 8, shift);
        to += 2;
    }
    return to;
}

template <int bits>
const std::uint8_t* getBits(const std::uint8_t* from, std::uint8_t* numbers) {
    int shift = 0;
    if constexpr (bits >= 8) {
        std::memcpy(numbers, from, groupSize);
        return from + groupSize;
    }
    std::memset(numbers, 0, groupSize);
    if constexpr ((bits & 4) != 0) {
        for (int i = 0; i < 8; ++i) {
            numbers[i] = from[i] & 15;
            numbers[i + 8] = from[i] >> 4;
        }
        from += 8;
        shift += 4;
    }
    if constexpr ((bits & 2) != 0) {
        for (int part = 0; part < 4; ++part)
            for (int i = 0; i < 4; ++i)
                numbers[i + part * 4] |= static_cast<std::uint8_t>((from[i] >> part * 2 & 3) << shift);
        from += 4;
        shift += 2;
    }
    if constexpr ((bits & 1) != 0) {
        for (int i = 0; i < groupSize; ++i)
            numbers[i] |= static_cast<std::uint8_t>((from[i / 8] >> i % 8 & 1) << shift);
        from += 2;
    }
    return from;
}

// How many bits a group of each class has: seven are stored as eight, so that three bits name the class.
inline constexpr int wholeBytes = 7;

inline int bytesOf(int bitClass) { return 2 * (bitClass == wholeBytes ? 8 : bitClass); }

inline std::uint8_t* putGroup(int bitClass, const std::uint8_t* numbers, std::uint8_t* to) {
    switch (bitClass) {
    case 0: return to;
    case 1: return putBits<1>(numbers, to);
    case 2: return putBits<2>(numbers, to);
    case 3: return putBits<3>(numbers, to);
    case 4: return putBits<4>(numbers, to);
    case 5: return putBits<5>(numbers, to);
    case 6: return putBits<6>(numbers, to);
    default: return putBits<8>(numbers, to);
    }
}

inline const std::uint8_t* getGroup(int bitClass, const std::uint8_t* from, std::uint8_t* numbers) {
    switch (bitClass) {
    case 0: return getBits<0>(from, numbers);
    case 1: return getBits<1>(from, numbers);
    case 2: return getBits<2>(from, numbers);
    case 3: return getBits<3>(from, numbers);
    case 4: return getBits<4>(from, numbers);
    case 5: return getBits<5>(from, numbers);
    case 6: return getBits<6>(from, numbers);
    default: return getBits<8>(from, numbers);
    }
}

inline int classOf(const std::uint8_t* numbers) {
    std::uint64_t halves[2];
    std::memcpy(halves, numbers, groupSize);
    std::uint64_t all = halves[0] | halves[1];
    all |= all >> 32;
    all |= all >> 16;
    all |= all >> 8;
    return std::min(static_cast<int>(std::bit_width(all & 0xFF)), wholeBytes);
}

} // namespace clipwren::bitgroups
