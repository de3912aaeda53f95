// UTF-16 to UTF-8 with vectors of 32 bytes, sixteen code units in a step. The bytes are built as by
// the encoder for SSSE3.

#include "text/kernel_level.hpp"
#include "text/utf8_encoder.hpp"
#include "text/utf8_slots.hpp"

#include <algorithm>
#include <bit>
#include <immintrin.h>

namespace tarn::text {

namespace {

constexpr std::ptrdiff_t STEP = 16;               ///< In code units.
constexpr std::ptrdiff_t ASCII_STEP = 2 * STEP;   ///< In code units.
constexpr std::ptrdiff_t THREE_BYTE_STEP = 3 * 4; ///< In bytes: what four code units give.

using Units = __m256i; ///< Sixteen code units.

[[gnu::target("avx2")]] inline Units load(const char16_t* units)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(units));
}

inline void store(char* out, __m128i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
}

[[gnu::target("avx2")]] inline Units all(unsigned value)
{
    return _mm256_set1_epi16(static_cast<short>(value));
}

/// All bits of each code unit that is at most @p limit, as an unsigned number.
[[gnu::target("avx2")]] inline Units atMost(Units units, unsigned limit)
{
    return _mm256_cmpeq_epi16(_mm256_min_epu16(units, all(limit)), units);
}

/// All bits of each code unit that has @p pattern in the bits of @p mask.
[[gnu::target("avx2")]] inline Units matching(Units units, unsigned mask, unsigned pattern)
{
    return _mm256_cmpeq_epi16(_mm256_and_si256(units, all(mask)), all(pattern));
}

/// One bit for each of sixteen code units.
[[gnu::target("avx2")]] inline unsigned bitsOf(Units mask)
{
    const __m128i bytes =
        _mm_packs_epi16(_mm256_castsi256_si128(mask), _mm256_extracti128_si256(mask, 1));
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

[[gnu::target("avx2")]] inline Units select(Units mask, Units ifSet, Units ifClear)
{
    return _mm256_blendv_epi8(ifClear, ifSet, mask);
}

[[gnu::target("avx2")]] inline __m128i close(const Shuffles& shuffles, __m128i slots, unsigned bits)
{
    return _mm_shuffle_epi8(
        slots, _mm_loadu_si128(reinterpret_cast<const __m128i*>(shuffles[bits].data())));
}

/// Writes sixteen slots of two bytes, of which the marked ones keep the first byte alone.
[[gnu::target("avx2,popcnt")]] inline char* closeTwoByteSlots(Units slots, unsigned asciiBits,
                                                              char* out)
{
    const unsigned low = asciiBits & 0xFF;
    const unsigned high = asciiBits >> 8;
    store(out, close(CLOSE_TWO_BYTE_SLOTS, _mm256_castsi256_si128(slots), low));
    out += STEP - std::popcount(low);
    store(out, close(CLOSE_TWO_BYTE_SLOTS, _mm256_extracti128_si256(slots, 1), high));
    return out + STEP - std::popcount(high);
}

/// Writes four slots of four bytes.
[[gnu::target("avx2,popcnt")]] inline char* closeFourByteSlots(__m128i slots, unsigned keepSecond,
                                                               unsigned keepFirst, char* out)
{
    const unsigned bits = (keepSecond & 0xF) | (keepFirst & 0xF) << 4;
    store(out, close(CLOSE_FOUR_BYTE_SLOTS, slots, bits));
    return out + 4 + std::popcount(bits);
}

/// The last byte of each code unit's encoding if that has more than one.
[[gnu::target("avx2")]] inline Units lastByte(Units units)
{
    return _mm256_or_si256(_mm256_and_si256(units, all(0x3F)), all(0x80));
}

/// The byte before the last one of each code unit that is no surrogate.
[[gnu::target("avx2")]] inline Units secondByte(Units units, Units twoBytes)
{
    return _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi16(units, 6), all(0x3F)),
                           select(twoBytes, all(0xC0), all(0x80)));
}

/// Writes sixteen code units of one byte, where @p ascii is set, or two: @p second and @p last.
[[gnu::target("avx2,popcnt")]] inline char* writeTwoBytes(Units units, Units ascii, Units second,
                                                          Units last, char* out)
{
    const Units slots = select(ascii, units, _mm256_or_si256(second, _mm256_slli_epi16(last, 8)));
    return closeTwoByteSlots(slots, bitsOf(ascii), out);
}

/// Writes sixteen code units of one byte, where @p ascii is set, two, where @p twoBytes is set, or
/// three.
[[gnu::target("avx2,popcnt")]] inline char*
writeThreeBytes(Units units, Units ascii, Units twoBytes, Units second, Units last, char* out)
{
    const Units first = _mm256_or_si256(_mm256_srli_epi16(units, 12), all(0xE0));
    const Units firstTwo = _mm256_or_si256(first, _mm256_slli_epi16(second, 8));
    const Units lastOrOnly = select(ascii, units, last);
    // In each half of the vectors: the slots of four code units, and those of the four after them.
    const __m256i even = _mm256_unpacklo_epi16(firstTwo, lastOrOnly);
    const __m256i odd = _mm256_unpackhi_epi16(firstTwo, lastOrOnly);
    const __m128i slots[] = {_mm256_castsi256_si128(even), _mm256_castsi256_si128(odd),
                             _mm256_extracti128_si256(even, 1), _mm256_extracti128_si256(odd, 1)};
    const unsigned keepFirst = bitsOf(twoBytes) ^ 0xFFFF;
    if (keepFirst == 0xFFFF) {
        for (const __m128i four : slots) {
            store(out, close(CLOSE_FOUR_BYTE_SLOTS, four, 0xFF));
            out += THREE_BYTE_STEP;
        }
        return out;
    }
    const unsigned keepSecond = bitsOf(ascii) ^ 0xFFFF;
    out = closeFourByteSlots(slots[0], keepSecond, keepFirst, out);
    out = closeFourByteSlots(slots[1], keepSecond >> 4, keepFirst >> 4, out);
    out = closeFourByteSlots(slots[2], keepSecond >> 8, keepFirst >> 8, out);
    return closeFourByteSlots(slots[3], keepSecond >> 12, keepFirst >> 12, out);
}

/// Encodes sixteen code units, among them surrogates. Returns null if one has no other half.
[[gnu::target("avx2,popcnt")]] inline char* encodePairs(Units units, Units previous, Units next,
                                                        char* out)
{
    const Units surrogates = matching(units, 0xF800, 0xD800);
    const Units high = matching(units, 0xFC00, 0xD800);
    const Units low = _mm256_xor_si256(surrogates, high);
    const Units paired = _mm256_or_si256(_mm256_and_si256(high, matching(next, 0xFC00, 0xDC00)),
                                         _mm256_and_si256(low, matching(previous, 0xFC00, 0xD800)));
    if (_mm256_testc_si256(paired, surrogates) == 0) {
        return nullptr;
    }
    const Units w = _mm256_add_epi16(_mm256_and_si256(units, all(0x3FF)), all(0x40));
    const Units secondOfHigh = _mm256_or_si256(_mm256_srli_epi16(w, 8), all(0xF0));
    const Units secondOfLow = _mm256_or_si256(
        _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(previous, all(3)), 4), all(0x80)),
        _mm256_and_si256(_mm256_srli_epi16(units, 6), all(0xF)));
    const Units belowThreeBytes = atMost(units, 0x7FF);
    const Units second =
        select(high, secondOfHigh, select(low, secondOfLow, secondByte(units, belowThreeBytes)));
    const Units last = select(high, lastByte(_mm256_srli_epi16(w, 2)), lastByte(units));
    const Units ascii = atMost(units, 0x7F);
    const Units twoBytes = _mm256_or_si256(belowThreeBytes, surrogates);
    return bitsOf(twoBytes) == 0xFFFF ? writeTwoBytes(units, ascii, second, last, out)
                                      : writeThreeBytes(units, ascii, twoBytes, second, last, out);
}

/// Encodes the sixteen code units at @p from and returns the end of their bytes, or null if one of
/// them is a surrogate without its other half. May read the code units before and after them.
[[gnu::target("avx2,popcnt")]] inline char* encodeStep(const char16_t* from, char* out)
{
    const Units units = load(from);
    const Units ascii = atMost(units, 0x7F);
    const Units twoBytes = atMost(units, 0x7FF); // or less
    if (bitsOf(twoBytes) == 0xFFFF) {
        const Units second = _mm256_or_si256(_mm256_srli_epi16(units, 6), all(0xC0));
        return writeTwoBytes(units, ascii, second, lastByte(units), out);
    }
    const Units surrogates = matching(units, 0xF800, 0xD800);
    if (_mm256_testz_si256(surrogates, surrogates) == 0) {
        return encodePairs(units, load(from - 1), load(from + 1), out);
    }
    return writeThreeBytes(units, ascii, twoBytes, secondByte(units, twoBytes), lastByte(units),
                           out);
}

[[gnu::target("avx2")]] inline bool isAscii(Units units)
{
    return _mm256_testz_si256(units, all(0xFF80)) != 0;
}

[[gnu::target("avx2,popcnt")]] EncodedUtf8 encode(const char16_t* first, const char16_t* last,
                                                  char* out)
{
    const char16_t* const begin = first;
    // The first step and the last ones are read from copies, which can be read beyond their ends.
    char16_t copy[1 + STEP + STEP] = {};
    while (first != last) {
        const std::ptrdiff_t left = last - first;
        if (left > ASCII_STEP && isAscii(_mm256_or_si256(load(first), load(first + STEP)))) {
            const __m256i bytes = _mm256_packus_epi16(load(first), load(first + STEP));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out),
                                _mm256_permute4x64_epi64(bytes, 0b11'01'10'00));
            first += ASCII_STEP;
            out += ASCII_STEP;
            continue;
        }
        const char16_t* from = first;
        if (left <= STEP || first == begin) {
            std::fill(copy + 1, std::end(copy), u'\0');
            copy[0] = first == begin ? u'\0' : first[-1];
            std::copy(first, first + std::min(left, STEP + 1), copy + 1);
            from = copy + 1;
        }
        char* const written = encodeStep(from, out);
        if (written == nullptr) {
            return encodeFromStep(begin, first, last, out);
        }
        // The NULs behind the end of the text have given one byte each.
        const std::ptrdiff_t count = std::min(left, STEP);
        first += count;
        out = written - (STEP - count);
    }
    return {last, out};
}

} // namespace

Utf8Encoder utf8EncoderForAvx2()
{
    return canUse(KernelLevel::Avx2) ? encode : nullptr;
}

} // namespace tarn::text
