// What the escaping kernels have in common: how specials are replaced once they are found, and the
// search for them with vectors of 16 bytes. Private to the kernels.
#pragma once

#include "tarn/xml/copy_units.hpp"
#include "tarn/xml/text_escaping.hpp"

#include <bit>
#include <cstdint>
#include <emmintrin.h> // SSE2, which every x86-64 processor has

namespace tarn::utils::detail {

/// In code units: what one mask covers.
inline constexpr std::size_t ESCAPING_BLOCK = 64;

/// In code units: what a copy of @p units code units may write, copies that overrun its end
/// included.
constexpr std::size_t roomForEscaped(std::size_t units)
{
    return units * LONGEST_REPLACEMENT + ESCAPING_STEP;
}
static_assert(roomForEscaped(ESCAPING_STEP) <= ESCAPING_MARGIN);

/// Whether there is a block to read, with a step behind it that may be read too, and room for it.
inline bool hasBlock(const char16_t* first, const char16_t* last, const char16_t* out,
                     const char16_t* outLast)
{
    return static_cast<std::size_t>(last - first) >= ESCAPING_BLOCK + ESCAPING_STEP &&
           static_cast<std::size_t>(outLast - out) >= roomForEscaped(ESCAPING_BLOCK);
}

/// As escape(), with vectors of 16 bytes, sixteen code units in a step.
EscapedRun escapeBySteps(const char16_t* first, const char16_t* last, char16_t* out,
                         const char16_t* outLast, const Replacements& replacements);

/// Copies @p length code units and more, in whole steps.
[[gnu::always_inline]] inline char16_t* copySteps(const char16_t* from, std::size_t length,
                                                  char16_t* out)
{
    copyBlock<ESCAPING_STEP>(from, out);
    for (std::size_t copied = ESCAPING_STEP; copied < length; copied += ESCAPING_STEP) {
        copyBlock<ESCAPING_STEP>(from + copied, out + copied);
    }
    return out + length;
}

/// Copies @p length code units, at most a step.
[[gnu::always_inline]] inline char16_t* copyExactly(const char16_t* from, std::size_t length,
                                                    char16_t* out)
{
    copyShort(from, length, out);
    return out + length;
}

/// Copies @p length code units with those that @p specials marks replaced, and returns the copy's
/// end.
template <char16_t* copyRun(const char16_t*, std::size_t, char16_t*)>
[[gnu::always_inline]] inline char16_t* replaceSpecials(const char16_t* units, std::size_t length,
                                                        std::uint64_t specials, char16_t* out,
                                                        const Replacements& replacements)
{
    constexpr std::size_t WIDTH = sizeof(Replacement) / sizeof(char16_t);
    std::size_t position = 0;
    for (; specials != 0; specials &= specials - 1) {
        const auto special = static_cast<std::size_t>(std::countr_zero(specials));
        out = copyRun(units + position, special - position, out);
        const Replacement& replacement = replacements[units[special]];
        copyBlock<WIDTH>(replacement.units, out);
        out += replacement.length;
        position = special + 1;
    }
    return copyRun(units + position, length - position, out);
}

} // namespace tarn::utils::detail
