// Copying of short runs of code units, inline.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace tarn::utils::detail {

/// Copies exactly @p LENGTH code units.
template <std::size_t LENGTH>
inline void copyBlock(const char16_t* from, char16_t* to)
{
    std::memcpy(to, from, LENGTH * sizeof(char16_t));
}

/// Copies @p text to @p out and returns the end of the copy. The two must not overlap.
inline char16_t* copyUnits(std::u16string_view text, char16_t* out)
{
    const char16_t* const from = text.data();
    const std::size_t length = text.size();
    // Two blocks that overlap cover every length between one block and two.
    if (length > 32) {
        std::memcpy(out, from, length * sizeof(char16_t));
    } else if (length >= 16) {
        copyBlock<16>(from, out);
        copyBlock<16>(from + length - 16, out + length - 16);
    } else if (length >= 8) {
        copyBlock<8>(from, out);
        copyBlock<8>(from + length - 8, out + length - 8);
    } else if (length >= 4) {
        copyBlock<4>(from, out);
        copyBlock<4>(from + length - 4, out + length - 4);
    } else if (length >= 2) {
        copyBlock<2>(from, out);
        copyBlock<2>(from + length - 2, out + length - 2);
    } else if (length == 1) {
        *out = *from;
    }
    return out + length;
}

} // namespace tarn::utils::detail
