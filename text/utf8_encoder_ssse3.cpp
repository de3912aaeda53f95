// UTF-16 to UTF-8 with vectors of 16 bytes: the bytes of eight code units are built side by side,
// each in a slot of fixed width, and a shuffle closes the gaps between them.

#include "text/utf16.hpp"
#include "text/utf8_encoder.hpp"

#include <array>
#include <bit>
#include <cstdint>
#include <immintrin.h>

namespace tarn::text {

namespace {

/// Shuffles by the bits that say how long each slot is: each is followed by what a shuffle reads as
/// zero.
using Shuffles = std::array<std::array<std::uint8_t, 16>, 256>;

/// For eight slots of two bytes: a set bit says that only the first byte is kept.
constexpr Shuffles CLOSE_TWO_BYTE_SLOTS = [] {
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

/// For four slots of four bytes, of which the last one is never kept, the third one always, the
/// second one if a bit of the lower four is set, and the first one if a bit of the upper four is
/// set.
constexpr Shuffles CLOSE_FOUR_BYTE_SLOTS = [] {
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

constexpr std::ptrdiff_t STEP = 8; ///< In code units.

__m128i load(const char16_t* units)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

void store(char* out, __m128i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
}

__m128i all(unsigned value)
{
    return _mm_set1_epi16(static_cast<short>(value));
}

/// For each code unit, all bits set if it is at most @p limit, as unsigned numbers.
__m128i atMost(__m128i units, unsigned limit)
{
    return _mm_cmpeq_epi16(_mm_subs_epu16(units, all(limit)), _mm_setzero_si128());
}

/// One bit for each of eight code units.
unsigned bitsOf(__m128i unitMask)
{
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(unitMask, _mm_setzero_si128())));
}

__m128i select(__m128i mask, __m128i ifSet, __m128i ifClear)
{
    return _mm_or_si128(_mm_and_si128(mask, ifSet), _mm_andnot_si128(mask, ifClear));
}

/// The last byte of each code unit's encoding if that has more than one.
__m128i lastByte(__m128i units)
{
    return _mm_or_si128(_mm_and_si128(units, all(0x3F)), all(0x80));
}

[[gnu::target("ssse3")]] __m128i close(const Shuffles& shuffles, __m128i slots, unsigned bits)
{
    return _mm_shuffle_epi8(
        slots, _mm_loadu_si128(reinterpret_cast<const __m128i*>(shuffles[bits].data())));
}

/// Encodes eight code units below U+0800 and returns the end of the bytes.
[[gnu::target("ssse3,popcnt")]] char* encodeTwoByteStep(__m128i units, __m128i ascii, char* out)
{
    const __m128i first = _mm_or_si128(_mm_srli_epi16(units, 6), all(0xC0));
    const __m128i pair = _mm_or_si128(first, _mm_slli_epi16(lastByte(units), 8));
    const unsigned asciiBits = bitsOf(ascii);
    store(out, close(CLOSE_TWO_BYTE_SLOTS, select(ascii, units, pair), asciiBits));
    return out + 2 * STEP - std::popcount(asciiBits);
}

/// Encodes eight code units, none of which is a surrogate, and returns the end of the bytes.
[[gnu::target("ssse3,popcnt")]] char* encodeThreeByteStep(__m128i units, __m128i ascii,
                                                          __m128i belowThreeBytes, char* out)
{
    const __m128i first = _mm_or_si128(_mm_srli_epi16(units, 12), all(0xE0));
    const __m128i sixBits = _mm_and_si128(_mm_srli_epi16(units, 6), all(0x3F));
    const __m128i second = _mm_or_si128(sixBits, select(belowThreeBytes, all(0xC0), all(0x80)));
    const __m128i firstTwo = _mm_or_si128(first, _mm_slli_epi16(second, 8));
    const __m128i last = select(ascii, units, lastByte(units));

    const unsigned keepSecond = bitsOf(ascii) ^ 0xFF;
    const unsigned keepFirst = bitsOf(belowThreeBytes) ^ 0xFF;
    const unsigned lowBits = (keepSecond & 0x0F) | (keepFirst & 0x0F) << 4;
    const unsigned highBits = keepSecond >> 4 | (keepFirst & 0xF0);
    store(out, close(CLOSE_FOUR_BYTE_SLOTS, _mm_unpacklo_epi16(firstTwo, last), lowBits));
    store(out + 4 + std::popcount(lowBits),
          close(CLOSE_FOUR_BYTE_SLOTS, _mm_unpackhi_epi16(firstTwo, last), highBits));
    return out + STEP + std::popcount(keepSecond) + std::popcount(keepFirst);
}

[[gnu::target("ssse3,popcnt")]] EncodedUtf8 encode(const char16_t* first, const char16_t* last,
                                                   char* out)
{
    while (last - first >= 2 * STEP) {
        const __m128i units = load(first);
        const __m128i next = load(first + STEP);
        const __m128i excess = _mm_and_si128(_mm_or_si128(units, next), all(0xFF80));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(excess, _mm_setzero_si128())) == 0xFFFF) {
            store(out, _mm_packus_epi16(units, next));
            first += 2 * STEP;
            out += 2 * STEP;
            continue;
        }
        const __m128i ascii = atMost(units, 0x7F);
        const __m128i belowThreeBytes = atMost(units, 0x7FF);
        if (_mm_movemask_epi8(belowThreeBytes) == 0xFFFF) {
            out = encodeTwoByteStep(units, ascii, out);
            first += STEP;
            continue;
        }
        const unsigned surrogates =
            bitsOf(_mm_cmpeq_epi16(_mm_and_si128(units, all(0xF800)), all(0xD800)));
        if (surrogates == 0) [[likely]] {
            out = encodeThreeByteStep(units, ascii, belowThreeBytes, out);
            first += STEP;
            continue;
        }
        const char16_t* const end = first + STEP + (isHighSurrogate(first[STEP - 1]) ? 1 : 0);
        const EncodedUtf8 step = encodeUtf8Portable(first, end, out);
        if (step.read != end) {
            return step;
        }
        first = step.read;
        out = step.written;
    }
    return encodeUtf8Portable(first, last, out);
}

} // namespace

Utf8Encoder utf8EncoderForSsse3()
{
    const bool available = __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("popcnt");
    return available ? encode : nullptr;
}

} // namespace tarn::text
