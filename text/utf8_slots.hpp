// How the encoders for vectors of 16 and 32 bytes close the gaps between encodings: the bytes of
// each code unit are built in a slot of fixed width, and a shuffle from a table moves those that
// are kept together. Private to them.
#pragma once

#include "text/utf8_encoder.hpp"

#include <array>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace tarn::text {

/// Shuffles by bits that say which bytes are dropped. Each is followed by what a shuffle reads as
/// any byte.
using Shuffles = std::array<std::array<std::uint8_t, 16>, 256>;

/// For eight slots of two bytes: a set bit says that only the first byte of its slot is kept.
alignas(64) inline constexpr Shuffles CLOSE_TWO_BYTE_SLOTS = [] {
    Shuffles shuffles{};
    for (unsigned bits = 0; bits < shuffles.size(); ++bits) {
        unsigned kept = 0;
        for (unsigned slot = 0; slot < 8; ++slot) {
            shuffles[bits][kept++] = static_cast<std::uint8_t>(2 * slot);
            if ((bits >> slot & 1) == 0) {
                shuffles[bits][kept++] = static_cast<std::uint8_t>(2 * slot + 1);
            }
        }
    }
    return shuffles;
}();

/// For four slots of four bytes, two bits for each slot. The lower one says that the second byte is
/// dropped, the upper one that the first is dropped. The third is always kept, the fourth never.
alignas(64) inline constexpr Shuffles CLOSE_FOUR_BYTE_SLOTS = [] {
    Shuffles shuffles{};
    for (unsigned bits = 0; bits < shuffles.size(); ++bits) {
        unsigned kept = 0;
        for (unsigned slot = 0; slot < 4; ++slot) {
            if ((bits >> (2 * slot + 1) & 1) == 0) {
                shuffles[bits][kept++] = static_cast<std::uint8_t>(4 * slot);
            }
            if ((bits >> (2 * slot) & 1) == 0) {
                shuffles[bits][kept++] = static_cast<std::uint8_t>(4 * slot + 1);
            }
            shuffles[bits][kept++] = static_cast<std::uint8_t>(4 * slot + 2);
        }
    }
    return shuffles;
}();

/// The code units at @p units, of which there are @p count, fewer than eight, and NULs behind them.
/// Reads no others.
inline __m128i loadFewerThanEight(const char16_t* units, std::ptrdiff_t count)
{
    constexpr int BITS = 16; // of a code unit
    if (count > 4) {
        std::uint64_t low = 0;
        std::uint64_t high = 0;
        std::memcpy(&low, units, sizeof low);
        std::memcpy(&high, units + count - 4, sizeof high);
        return _mm_set_epi64x(static_cast<std::int64_t>(high >> (BITS * (8 - count))),
                              static_cast<std::int64_t>(low));
    }
    if (count >= 2) {
        // If there are three, the one in the middle is in both halves.
        std::uint32_t low = 0;
        std::uint32_t high = 0;
        std::memcpy(&low, units, sizeof low);
        std::memcpy(&high, units + count - 2, sizeof high);
        return _mm_cvtsi64_si128(
            static_cast<std::int64_t>(low | std::uint64_t{high} << (BITS * (count - 2))));
    }
    return _mm_cvtsi32_si128(count == 1 ? *units : 0);
}

} // namespace tarn::text
