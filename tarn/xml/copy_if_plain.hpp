// Copying of short values that hold nothing to be replaced, inline: most values are of that kind,
// and each code unit is loaded only once.
#pragma once

#include "tarn/xml/copy_units.hpp"

#include <cstddef>
#include <cstdint>
#include <emmintrin.h> // SSE2, which every x86-64 processor has
#include <string_view>

namespace tarn::utils::detail {

/// All bits of each byte that could come from a special code unit: also those of the control
/// characters that are not special.
///
/// @param low,high code units, eight each.
inline __m128i suspects(__m128i low, __m128i high)
{
    // Saturated as signed, code units from U+0080 on give 7F or 80, which are no suspects.
    const __m128i bytes = _mm_packs_epi16(low, high);
    const auto all = [](char value) { return _mm_set1_epi8(value); };
    const __m128i controls = _mm_cmpeq_epi8(_mm_min_epu8(bytes, all(0x1F)), bytes);
    // Pairs that differ in one bit are found by one comparison: & and ', < and >.
    const __m128i doubleQuotes = _mm_cmpeq_epi8(bytes, all('"'));
    const __m128i quotes = _mm_cmpeq_epi8(_mm_or_si128(bytes, all(1)), all('\''));
    const __m128i angles = _mm_cmpeq_epi8(_mm_or_si128(bytes, all(2)), all('>'));
    return _mm_or_si128(_mm_or_si128(controls, doubleQuotes), _mm_or_si128(quotes, angles));
}

/// In UTF-16 code units: for longer values the kernels of text_escaping.hpp are faster.
inline constexpr std::size_t LONGEST_SHORT_VALUE = 128;

/// Copies @p text to @p out and returns the end of the copy, or null if some code unit of it could
/// be special, in which case what it has written is of no use. The two must not overlap.
inline char16_t* copyIfPlain(std::u16string_view text, char16_t* out)
{
    const auto load = [](const char16_t* units) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
    };
    const auto loadHalf = [](const char16_t* units) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units));
    };
    const auto store = [](char16_t* units, __m128i vector) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(units), vector);
    };
    const auto storeHalf = [](char16_t* units, __m128i vector) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(units), vector);
    };
    const auto anyOf = [](__m128i suspected) { return _mm_movemask_epi8(suspected) != 0; };
    const char16_t* const from = text.data();
    const std::size_t length = text.size();
    // Two vectors that overlap cover every length between one vector and two.
    if (length >= 16) {
        __m128i suspected = _mm_setzero_si128();
        const auto copyStep = [&](std::size_t place) {
            const __m128i low = load(from + place);
            const __m128i high = load(from + place + 8);
            store(out + place, low);
            store(out + place + 8, high);
            suspected = _mm_or_si128(suspected, suspects(low, high));
        };
        for (std::size_t place = 0; place < length - 16; place += 16) {
            copyStep(place);
        }
        copyStep(length - 16);
        return anyOf(suspected) ? nullptr : out + length;
    }
    if (length >= 8) {
        const __m128i low = load(from);
        const __m128i high = load(from + length - 8);
        store(out, low);
        store(out + length - 8, high);
        return anyOf(suspects(low, high)) ? nullptr : out + length;
    }
    if (length >= 4) {
        const __m128i low = loadHalf(from);
        const __m128i high = loadHalf(from + length - 4);
        storeHalf(out, low);
        storeHalf(out + length - 4, high);
        const __m128i both = _mm_unpacklo_epi64(low, high);
        return anyOf(suspects(both, both)) ? nullptr : out + length;
    }
    if (length == 0) {
        return out;
    }
    // The first, the middle and the last are all there are.
    const std::uint32_t first = from[0];
    const std::uint32_t middle = from[length / 2];
    const std::uint32_t last = from[length - 1];
    out[0] = static_cast<char16_t>(first);
    out[length / 2] = static_cast<char16_t>(middle);
    out[length - 1] = static_cast<char16_t>(last);
    __m128i all = _mm_cvtsi32_si128(static_cast<int>(first | middle << 16));
    all = _mm_unpacklo_epi32(all, _mm_cvtsi32_si128(static_cast<int>(last | last << 16)));
    all = _mm_unpacklo_epi64(all, all);
    return anyOf(suspects(all, all)) ? nullptr : out + length;
}

} // namespace tarn::utils::detail
