// UTF-16 to UTF-8 with vectors of 16 bytes, eight code units in a step.
//
// Each half of a surrogate pair gives two of the four bytes, so that a pair needs no joining. With
// u the code unit and w = (u & 3FF) + 40, all in hexadecimal:
//     high half: F0 | w >> 8,                                80 | (w >> 2 & 3F)
//     low half:  80 | (half before & 3) << 4 | (u >> 6 & F), 80 | (u & 3F)

#include "text/kernel_level.hpp"
#include "text/utf8_encoder.hpp"
#include "text/utf8_slots.hpp"

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

/// Two equal bits for each code unit.
unsigned bitsOf(Units mask)
{
    return static_cast<unsigned>(_mm_movemask_epi8(mask));
}

/// Whether all code units are below @p limit.
bool areBelow(Units units, unsigned limit)
{
    // A saturating sum has its highest bit set, and so has its second byte, if a unit is not.
    constexpr unsigned SECOND_BYTES = 0xAAAA;
    return (bitsOf(_mm_adds_epu16(units, all(0x8000 - limit))) & SECOND_BYTES) == 0;
}

Units select(Units mask, Units ifSet, Units ifClear)
{
    return _mm_or_si128(_mm_and_si128(mask, ifSet), _mm_andnot_si128(mask, ifClear));
}

[[gnu::target("ssse3")]] __m128i close(const Shuffles& shuffles, __m128i slots, unsigned bits)
{
    return _mm_shuffle_epi8(
        slots, _mm_load_si128(reinterpret_cast<const __m128i*>(shuffles[bits].data())));
}

/// The second and last byte of each code unit that is below 1000, in a slot of two bytes.
///
/// @param marks the bits of the bytes that tell their kind.
Units twoByteSlots(Units units, Units marks)
{
    const Units second = _mm_srli_epi16(units, 6);
    const Units last = _mm_and_si128(_mm_slli_epi16(units, 8), all(0x3F00));
    return _mm_or_si128(_mm_or_si128(second, last), marks);
}

/// Writes eight code units of one byte, where @p ascii is set, or two.
[[gnu::target("ssse3,popcnt")]] char* writeTwoBytes(Units units, Units ascii, Units marks,
                                                    char* out)
{
    const Units slots = select(ascii, units, twoByteSlots(units, marks));
    const unsigned asciiBits = bitsOf(_mm_packs_epi16(ascii, _mm_setzero_si128()));
    store(out, close(CLOSE_TWO_BYTE_SLOTS, slots, asciiBits));
    return out + 2 * STEP - std::popcount(asciiBits);
}

/// Writes eight code units of one byte, where @p ascii is set, two, where @p twoBytes is set, or
/// three. @p twoBytes is set where @p ascii is.
///
/// @param marks the bits of the first and second byte that tell their kind.
[[gnu::target("ssse3,popcnt")]] char* writeMixed(Units units, Units ascii, Units twoBytes,
                                                 Units marks, char* out)
{
    const Units first = _mm_srli_epi16(units, 12);
    const Units second = _mm_and_si128(_mm_slli_epi16(units, 2), all(0x3F00));
    const Units firstTwo = _mm_or_si128(_mm_or_si128(first, second), marks);
    const Units last =
        select(ascii, units, _mm_or_si128(_mm_and_si128(units, all(0x3F)), all(0x80)));
    const unsigned dropped = bitsOf(_mm_or_si128(ascii, _mm_and_si128(twoBytes, all(0xFF00))));
    const unsigned low = dropped & 0xFF;
    store(out, close(CLOSE_FOUR_BYTE_SLOTS, _mm_unpacklo_epi16(firstTwo, last), low));
    store(out + 3 * STEP / 2 - std::popcount(low),
          close(CLOSE_FOUR_BYTE_SLOTS, _mm_unpackhi_epi16(firstTwo, last), dropped >> 8));
    return out + 3 * STEP - std::popcount(dropped);
}

/// What a step has done.
struct Step
{
    std::ptrdiff_t read; ///< In code units. Zero if one of them is a surrogate without its other
                         ///< half.
    char* written;
};

/// Encodes eight code units, among them surrogates. Leaves the last one if it is a high surrogate,
/// so that no pair lies in two steps.
[[gnu::target("ssse3,popcnt")]] Step encodePairs(Units units, Units surrogates, char* out)
{
    const Units high = matching(units, 0xFC00, 0xD800);
    const Units low = _mm_xor_si128(surrogates, high);
    const unsigned highBits = bitsOf(high);
    if (bitsOf(low) != (highBits << 2 & 0xFFFF)) {
        return {0, out};
    }
    const Units previous = _mm_slli_si128(units, 2);
    // Numbers whose bits are where those of any code unit of two bytes are.
    const Units bits = _mm_andnot_si128(_mm_and_si128(surrogates, all(0xFC00)), units);
    const Units ofHigh = _mm_srli_epi16(_mm_add_epi16(bits, all(0x40)), 2);
    const Units ofPrevious =
        _mm_and_si128(_mm_slli_epi16(previous, 10), _mm_and_si128(low, all(0x0C00)));
    const Units numbers = select(high, ofHigh, _mm_or_si128(bits, ofPrevious));
    const Units ascii = atMost(units, 0x7F);
    const Units twoBytes = _mm_or_si128(atMost(units, 0x7FF), surrogates);
    // What turns the mark C0 of a second byte into F0 and 80.
    const Units marks = _mm_or_si128(_mm_and_si128(high, all(0x30)), _mm_and_si128(low, all(0x40)));
    if (bitsOf(twoBytes) == 0xFFFF) {
        out = writeTwoBytes(numbers, ascii, _mm_xor_si128(marks, all(0x80C0)), out);
    } else {
        const Units marksOfTwo = _mm_and_si128(twoBytes, all(0x4000));
        out = writeMixed(
            numbers, ascii, twoBytes,
            _mm_xor_si128(_mm_or_si128(marksOfTwo, all(0x80E0)), _mm_slli_epi16(marks, 8)), out);
    }
    // A branch, so that the next load need not wait for these bits.
    if (highBits >> 15 != 0) [[unlikely]] {
        return {STEP - 1, out - 2};
    }
    return {STEP, out};
}

/// Encodes eight code units. Inlined even if the compiler would not, so that the loop keeps its
/// constants in registers.
[[gnu::always_inline, gnu::target("ssse3,popcnt")]] inline Step encodeStep(Units units, char* out)
{
    if (areBelow(units, 0x800)) {
        const Units ascii = _mm_cmplt_epi16(units, all(0x80));
        return {STEP, writeTwoBytes(units, ascii, all(0x80C0), out)};
    }
    const Units surrogates = matching(units, 0xF800, 0xD800);
    if (bitsOf(surrogates) != 0) {
        return encodePairs(units, surrogates, out);
    }
    const Units twoBytes = atMost(units, 0x7FF);
    const Units marks = _mm_or_si128(_mm_and_si128(twoBytes, all(0x4000)), all(0x80E0));
    return {STEP, writeMixed(units, atMost(units, 0x7F), twoBytes, marks, out)};
}

[[gnu::target("ssse3,popcnt")]] EncodedUtf8 encode(const char16_t* first, const char16_t* last,
                                                   char* out)
{
    while (last - first >= STEP) {
        for (; last - first >= 2 * STEP; first += 2 * STEP, out += 2 * STEP) {
            const Units units = load(first);
            const Units after = load(first + STEP);
            if (!areBelow(_mm_or_si128(units, after), 0x80)) {
                break;
            }
            store(out, _mm_packus_epi16(units, after));
        }
        if (last - first < STEP) {
            break;
        }
        const Step step = encodeStep(load(first), out);
        if (step.read == 0) {
            return encodeUtf8Portable(first, last, out);
        }
        first += step.read;
        out = step.written;
    }
    if (first != last) {
        const Step step = encodeStep(loadFewerThanEight(first, last - first), out);
        if (step.read == 0) {
            return encodeUtf8Portable(first, last, out);
        }
        // The NULs behind the end of the text have given one byte each.
        out = step.written - (STEP - (last - first));
    }
    return {last, out};
}

} // namespace

Utf8Encoder utf8EncoderForSsse3()
{
    return canUse(KernelLevel::Ssse3) ? encode : nullptr;
}

} // namespace tarn::text
