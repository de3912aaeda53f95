// How the encoders for vectors of 16 and 32 bytes close the gaps between encodings: the bytes of
// each code unit are built in a slot of fixed width, and a shuffle from a table moves those that
// are kept together. Private to them.
#pragma once

#include "text/utf16.hpp"
#include "text/utf8_encoder.hpp"

#include <array>
#include <cstdint>

namespace tarn::text {

/// Shuffles by bits that say which bytes are kept. Each is followed by what a shuffle reads as
/// zero.
using Shuffles = std::array<std::array<std::uint8_t, 16>, 256>;

/// For eight slots of two bytes: a set bit says that only the first byte of its slot is kept.
inline constexpr Shuffles CLOSE_TWO_BYTE_SLOTS = [] {
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

/// For four slots of four bytes. The third byte of a slot is always kept, the fourth never, the
/// second if the slot's bit among the lower four is set, the first if its bit among the upper four
/// is set.
inline constexpr Shuffles CLOSE_FOUR_BYTE_SLOTS = [] {
    Shuffles shuffles{};
    for (unsigned bits = 0; bits < shuffles.size(); ++bits) {
        unsigned kept = 0;
        for (unsigned slot = 0; slot < 4; ++slot) {
            if ((bits >> (slot + 4) & 1) != 0) {
                shuffles[bits][kept++] = static_cast<std::uint8_t>(4 * slot);
            }
            if ((bits >> slot & 1) != 0) {
                shuffles[bits][kept++] = static_cast<std::uint8_t>(4 * slot + 1);
            }
            shuffles[bits][kept++] = static_cast<std::uint8_t>(4 * slot + 2);
        }
    }
    return shuffles;
}();

/// Goes on one code point at a time where a vector step has met a surrogate without its other half.
///
/// @param begin the beginning of the text.
/// @param first the beginning of the step. The code unit before it can be the high surrogate of a
///     pair, whose two bytes are the last ones before @p out.
inline EncodedUtf8 encodeFromStep(const char16_t* begin, const char16_t* first,
                                  const char16_t* last, char* out)
{
    constexpr std::ptrdiff_t BYTES_OF_A_HALF = 2;
    if (first != begin && isHighSurrogate(first[-1])) {
        return encodeUtf8Portable(first - 1, last, out - BYTES_OF_A_HALF);
    }
    return encodeUtf8Portable(first, last, out);
}

} // namespace tarn::text
