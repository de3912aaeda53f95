// Copying of short runs of code units, inline.
#pragma once

#include <cstddef>
#include <cstring>
#include <emmintrin.h> // SSE2, which every x86-64 processor has
#include <string_view>

namespace tarn::utils::detail {

/// Copies exactly @p LENGTH code units.
template <std::size_t LENGTH>
inline void copyBlock(const char16_t* from, char16_t* to)
{
    std::memcpy(to, from, LENGTH * sizeof(char16_t));
}

/// Copies @p length code units, at most 32.
inline void copyShort(const char16_t* from, std::size_t length, char16_t* to)
{
    // Two blocks that overlap cover every length between one block and two.
    if (length >= 16) {
        copyBlock<16>(from, to);
        copyBlock<16>(from + length - 16, to + length - 16);
    } else if (length >= 8) {
        copyBlock<8>(from, to);
        copyBlock<8>(from + length - 8, to + length - 8);
    } else if (length >= 4) {
        copyBlock<4>(from, to);
        copyBlock<4>(from + length - 4, to + length - 4);
    } else if (length >= 2) {
        copyBlock<2>(from, to);
        copyBlock<2>(from + length - 2, to + length - 2);
    } else if (length == 1) {
        *to = *from;
    }
}

/// Copies @p text to @p out and returns the end of the copy. The two must not overlap.
inline char16_t* copyUnits(std::u16string_view text, char16_t* out)
{
    if (text.size() > 32) {
        std::memcpy(out, text.data(), text.size() * sizeof(char16_t));
    } else {
        copyShort(text.data(), text.size(), out);
    }
    return out + text.size();
}

/// Makes @p length code units at @p out spaces and returns their end.
inline char16_t* fillWithSpaces(std::size_t length, char16_t* out)
{
    constexpr std::size_t BLOCK = 16;
    const __m128i spaces = _mm_set1_epi16(u' ');
    const auto storeBlock = [spaces](char16_t* units) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(units), spaces);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(units + BLOCK / 2), spaces);
    };
    char16_t* const last = out + length;
    if (length < BLOCK) {
        while (out != last) {
            *out++ = u' ';
        }
        return last;
    }
    for (; last - out > static_cast<std::ptrdiff_t>(BLOCK); out += BLOCK) {
        storeBlock(out);
    }
    storeBlock(last - BLOCK);
    return last;
}

} // namespace tarn::utils::detail
