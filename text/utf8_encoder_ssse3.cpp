// UTF-16 to UTF-8 with vectors of 16 bytes, eight code units in a step.
//
// Each half of a surrogate pair gives two of the four bytes, so that a pair needs no joining and
// can lie in two steps. With u the code unit and w = (u & 3FF) + 40, all in hexadecimal:
//     high half: F0 | w >> 8,                             80 | (w >> 2 & 3F)
//     low half:  80 | (half before & 3) << 4 | (u >> 6 & F), 80 | (u & 3F)

#include "text/kernel_level.hpp"
#include "text/utf8_encoder.hpp"
#include "text/utf8_slots.hpp"

#include <algorithm>
#include <bit>
#include <immintrin.h>

namespace tarn::text {

namespace {

constexpr std::ptrdiff_t STEP = 8; ///< In code units.

using Units = __m128i; ///< Eight code units.

Units load(const char16_t* units)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

void store(char* out, __m128i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
}

Units all(unsigned value)
{
    return _mm_set1_epi16(static_cast<short>(value));
}

/// All bits of each code unit that is at most @p limit, as an unsigned number.
Units atMost(Units units, unsigned limit)
{
    return _mm_cmpeq_epi16(_mm_subs_epu16(units, all(limit)), _mm_setzero_si128());
}

/// All bits of each code unit that has @p pattern in the bits of @p mask.
Units matching(Units units, unsigned mask, unsigned pattern)
{
    return _mm_cmpeq_epi16(_mm_and_si128(units, all(mask)), all(pattern));
}

/// One bit for each of eight code units.
unsigned bitsOf(Units mask)
{
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(mask, _mm_setzero_si128())));
}

Units select(Units mask, Units ifSet, Units ifClear)
{
    return _mm_or_si128(_mm_and_si128(mask, ifSet), _mm_andnot_si128(mask, ifClear));
}

[[gnu::target("ssse3")]] __m128i close(const Shuffles& shuffles, __m128i slots, unsigned bits)
{
    return _mm_shuffle_epi8(
        slots, _mm_loadu_si128(reinterpret_cast<const __m128i*>(shuffles[bits].data())));
}

/// The last byte of each code unit's encoding if that has more than one.
Units lastByte(Units units)
{
    return _mm_or_si128(_mm_and_si128(units, all(0x3F)), all(0x80));
}

/// Writes eight code units of one byte, where @p ascii is set, or two: @p second and @p last.
[[gnu::target("ssse3,popcnt")]] char* writeTwoBytes(Units units, Units ascii, Units second,
                                                    Units last, char* out)
{
    const Units slots = select(ascii, units, _mm_or_si128(second, _mm_slli_epi16(last, 8)));
    const unsigned asciiBits = bitsOf(ascii);
    store(out, close(CLOSE_TWO_BYTE_SLOTS, slots, asciiBits));
    return out + 2 * STEP - std::popcount(asciiBits);
}

/// Writes eight code units of one byte, where @p ascii is set, two, where @p twoBytes is set, or
/// three.
[[gnu::target("ssse3,popcnt")]] char* writeThreeBytes(Units units, Units ascii, Units twoBytes,
                                                      Units second, Units last, char* out)
{
    const Units first = _mm_or_si128(_mm_srli_epi16(units, 12), all(0xE0));
    const Units firstTwo = _mm_or_si128(first, _mm_slli_epi16(second, 8));
    const Units lastOrOnly = select(ascii, units, last);
    const unsigned keepSecond = bitsOf(ascii) ^ 0xFF;
    const unsigned keepFirst = bitsOf(twoBytes) ^ 0xFF;
    const unsigned lowBits = (keepSecond & 0x0F) | (keepFirst & 0x0F) << 4;
    const unsigned highBits = keepSecond >> 4 | (keepFirst & 0xF0);
    store(out, close(CLOSE_FOUR_BYTE_SLOTS, _mm_unpacklo_epi16(firstTwo, lastOrOnly), lowBits));
    store(out + 4 + std::popcount(lowBits),
          close(CLOSE_FOUR_BYTE_SLOTS, _mm_unpackhi_epi16(firstTwo, lastOrOnly), highBits));
    return out + STEP + std::popcount(keepSecond) + std::popcount(keepFirst);
}

/// Encodes eight code units, among them surrogates. Returns null if one has no other half.
[[gnu::target("ssse3,popcnt")]] char* encodePairs(Units units, Units previous, Units next,
                                                  char* out)
{
    const Units surrogates = matching(units, 0xF800, 0xD800);
    const Units high = matching(units, 0xFC00, 0xD800);
    const Units low = _mm_xor_si128(surrogates, high);
    const Units paired = _mm_or_si128(_mm_and_si128(high, matching(next, 0xFC00, 0xDC00)),
                                      _mm_and_si128(low, matching(previous, 0xFC00, 0xD800)));
    if (_mm_movemask_epi8(_mm_xor_si128(surrogates, paired)) != 0) {
        return nullptr;
    }
    const Units w = _mm_add_epi16(_mm_and_si128(units, all(0x3FF)), all(0x40));
    const Units secondOfHigh = _mm_or_si128(_mm_srli_epi16(w, 8), all(0xF0));
    const Units secondOfLow =
        _mm_or_si128(_mm_or_si128(_mm_slli_epi16(_mm_and_si128(previous, all(3)), 4), all(0x80)),
                     _mm_and_si128(_mm_srli_epi16(units, 6), all(0xF)));
    const Units belowThreeBytes = atMost(units, 0x7FF);
    const Units secondOfOthers = _mm_or_si128(_mm_and_si128(_mm_srli_epi16(units, 6), all(0x3F)),
                                              select(belowThreeBytes, all(0xC0), all(0x80)));
    const Units second = select(high, secondOfHigh, select(low, secondOfLow, secondOfOthers));
    const Units last = select(high, lastByte(_mm_srli_epi16(w, 2)), lastByte(units));
    const Units ascii = atMost(units, 0x7F);
    const Units twoBytes = _mm_or_si128(belowThreeBytes, surrogates);
    return _mm_movemask_epi8(twoBytes) == 0xFFFF
               ? writeTwoBytes(units, ascii, second, last, out)
               : writeThreeBytes(units, ascii, twoBytes, second, last, out);
}

/// Encodes eight code units and returns the end of their bytes, or null if one of them is a
/// surrogate without its other half.
///
/// @param previous,next the code unit before each, and the one after it.
[[gnu::target("ssse3,popcnt")]] char* encodeStep(Units units, Units previous, Units next, char* out)
{
    const Units ascii = atMost(units, 0x7F);
    const Units twoBytes = atMost(units, 0x7FF); // or less
    if (_mm_movemask_epi8(twoBytes) == 0xFFFF) {
        const Units second = _mm_or_si128(_mm_srli_epi16(units, 6), all(0xC0));
        return writeTwoBytes(units, ascii, second, lastByte(units), out);
    }
    if (_mm_movemask_epi8(matching(units, 0xF800, 0xD800)) != 0) {
        return encodePairs(units, previous, next, out);
    }
    const Units second = _mm_or_si128(_mm_and_si128(_mm_srli_epi16(units, 6), all(0x3F)),
                                      select(twoBytes, all(0xC0), all(0x80)));
    return writeThreeBytes(units, ascii, twoBytes, second, lastByte(units), out);
}

bool isAscii(Units units)
{
    return _mm_movemask_epi8(matching(units, 0xFF80, 0)) == 0xFFFF;
}

[[gnu::target("ssse3,popcnt")]] EncodedUtf8 encode(const char16_t* first, const char16_t* last,
                                                   char* out)
{
    const char16_t* const begin = first;
    while (last - first > 2 * STEP) {
        const Units units = load(first);
        const Units after = load(first + STEP);
        if (isAscii(_mm_or_si128(units, after))) {
            store(out, _mm_packus_epi16(units, after));
            first += 2 * STEP;
            out += 2 * STEP;
            continue;
        }
        const Units previous = first == begin ? _mm_slli_si128(units, 2) : load(first - 1);
        char* const written = encodeStep(units, previous, load(first + 1), out);
        if (written == nullptr) {
            return encodeFromStep(begin, first, last, out);
        }
        first += STEP;
        out = written;
    }
    // What is left, padded with NULs, each of which gives one byte.
    while (first != last) {
        const std::ptrdiff_t count = std::min(last - first, STEP);
        char16_t padded[1 + STEP + 1] = {};
        padded[0] = first == begin ? u'\0' : first[-1];
        std::copy(first, std::min(last, first + STEP + 1), padded + 1);
        char* const written = encodeStep(load(padded + 1), load(padded), load(padded + 2), out);
        if (written == nullptr) {
            return encodeFromStep(begin, first, last, out);
        }
        first += count;
        out = written - (STEP - count);
    }
    return {last, out};
}

} // namespace

Utf8Encoder utf8EncoderForSsse3()
{
    return canUse(KernelLevel::Ssse3) ? encode : nullptr;
}

} // namespace tarn::text
