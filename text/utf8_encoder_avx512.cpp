// UTF-16 to UTF-8 with vectors of 64 bytes, 32 code units in a step. The bytes are built as by the
// encoder for SSSE3; one instruction closes the gaps between those that are kept.

#include "text/kernel_level.hpp"
#include "text/utf16.hpp"
#include "text/utf8_encoder.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <immintrin.h>

namespace tarn::text {

namespace {

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

constexpr std::ptrdiff_t STEP = 32; ///< In code units.

using Units = __m512i; ///< 32 code units.

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline Units
all(unsigned value)
{
    return _mm512_set1_epi16(static_cast<short>(value));
}

/// Which code units have @p pattern in the bits of @p mask.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline std::uint32_t
matching(Units units, unsigned mask, unsigned pattern)
{
    return _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, all(mask)), all(pattern));
}

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline Units
select(std::uint32_t mask, Units ifSet, Units ifClear)
{
    return _mm512_mask_mov_epi16(ifClear, mask, ifSet);
}

/// Writes the bytes that are marked in @p kept, without gaps.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline char*
closeGaps(__m512i bytes, std::uint64_t kept, char* out)
{
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(kept, bytes));
    return out + std::popcount(kept);
}

/// Which bytes are kept of sixteen slots of four bytes: the third of each, the second where
/// @p keepSecond has a bit, the first where @p keepFirst has one.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline std::uint64_t
keptOfFourByteSlots(std::uint32_t keepSecond, std::uint32_t keepFirst)
{
    return 0x4444444444444444 | _pdep_u64(keepSecond, 0x2222222222222222) |
           _pdep_u64(keepFirst, 0x1111111111111111);
}

/// Encodes 32 code units and returns the end of their bytes, or null if one of them is a surrogate
/// without its other half.
///
/// @param previous the code unit before each.
/// @param isLowNext whether a low surrogate follows the last one.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline char*
encodeStep(Units units, Units previous, bool isLowNext, char* out)
{
    const std::uint32_t ascii = _mm512_cmplt_epu16_mask(units, all(0x80));
    std::uint32_t twoBytes = _mm512_cmplt_epu16_mask(units, all(0x800)); // or less
    Units second = _mm512_or_si512(_mm512_and_si512(_mm512_srli_epi16(units, 6), all(0x3F)),
                                   select(twoBytes, all(0xC0), all(0x80)));
    Units last =
        select(ascii, units, _mm512_or_si512(_mm512_and_si512(units, all(0x3F)), all(0x80)));
    const std::uint32_t surrogates = matching(units, 0xF800, 0xD800);
    if (surrogates != 0) {
        const std::uint32_t high = matching(units, 0xFC00, 0xD800);
        const std::uint32_t low = surrogates ^ high;
        const std::uint32_t afterHigh = matching(previous, 0xFC00, 0xD800);
        const std::uint32_t beforeLow = low >> 1 | (isLowNext ? std::uint32_t{1} << 31 : 0);
        if (((high & ~beforeLow) | (low & ~afterHigh)) != 0) {
            return nullptr;
        }
        const Units w = _mm512_add_epi16(_mm512_and_si512(units, all(0x3FF)), all(0x40));
        const Units secondOfLow = _mm512_or_si512(
            all(0x80), _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(previous, all(3)), 4),
                                       _mm512_and_si512(_mm512_srli_epi16(units, 6), all(0xF))));
        second = select(low, secondOfLow, second);
        second = select(high, _mm512_or_si512(all(0xF0), _mm512_srli_epi16(w, 8)), second);
        last = select(
            high, _mm512_or_si512(all(0x80), _mm512_and_si512(_mm512_srli_epi16(w, 2), all(0x3F))),
            last);
        twoBytes |= surrogates;
    }
    if (twoBytes == 0xFFFFFFFF) {
        const Units slots =
            _mm512_or_si512(select(ascii, units, second), _mm512_slli_epi16(last, 8));
        return closeGaps(slots, 0x5555555555555555 | _pdep_u64(~ascii, 0xAAAAAAAAAAAAAAAA), out);
    }
    const Units first = _mm512_or_si512(_mm512_srli_epi16(units, 12), all(0xE0));
    const Units firstTwo = _mm512_or_si512(first, _mm512_slli_epi16(second, 8));
    // Pairs of a 16-bit number of firstTwo and one of last, which has bit 5 of the index set.
    const Units numbers = _mm512_set_epi32(
        0x2F000F, 0x2E000E, 0x2D000D, 0x2C000C, 0x2B000B, 0x2A000A, 0x290009, 0x280008, 0x270007,
        0x260006, 0x250005, 0x240004, 0x230003, 0x220002, 0x210001, 0x200000);
    const Units lowSlots = _mm512_permutex2var_epi16(firstTwo, numbers, last);
    const Units highSlots =
        _mm512_permutex2var_epi16(firstTwo, _mm512_add_epi16(numbers, all(16)), last);
    const std::uint32_t keepSecond = ~ascii;
    const std::uint32_t keepFirst = ~twoBytes;
    out = closeGaps(lowSlots, keptOfFourByteSlots(keepSecond & 0xFFFF, keepFirst & 0xFFFF), out);
    return closeGaps(highSlots, keptOfFourByteSlots(keepSecond >> 16, keepFirst >> 16), out);
}

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] EncodedUtf8
encode(const char16_t* first, const char16_t* last, char* out)
{
    const char16_t* const begin = first;
    while (first != last) {
        const std::ptrdiff_t left = last - first;
        const std::ptrdiff_t count = std::min(left, STEP);
        // What is not present is not read, and counts as NUL.
        const auto present = static_cast<std::uint32_t>((std::uint64_t{1} << count) - 1);
        const Units units = _mm512_maskz_loadu_epi16(present, first);
        if (_mm512_test_epi16_mask(units, all(0xFF80)) == 0 && count == STEP) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_cvtepi16_epi8(units));
            first += STEP;
            out += STEP;
            continue;
        }
        const Units previous =
            _mm512_maskz_loadu_epi16(first == begin ? present & ~1u : present, first - 1);
        char* const written =
            encodeStep(units, previous, left > STEP && isLowSurrogate(first[STEP]), out);
        if (written == nullptr) {
            return encodeFromStep(begin, first, last, out);
        }
        first += count;
        out = written - (STEP - count); // each NUL has given one byte
    }
    return {last, out};
}

} // namespace

Utf8Encoder utf8EncoderForAvx512()
{
    return canUse(KernelLevel::Avx512) ? encode : nullptr;
}

} // namespace tarn::text
