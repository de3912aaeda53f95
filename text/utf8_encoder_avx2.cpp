// UTF-16 to UTF-8 with vectors of 32 bytes, sixteen code units in a step. The bytes are built as by
// the encoder for SSSE3.

#include "text/kernel_level.hpp"
#include "text/utf8_encoder.hpp"
#include "text/utf8_slots.hpp"

#include <bit>
#include <immintrin.h>

namespace tarn::text {

namespace {

constexpr std::ptrdiff_t STEP = 16; ///< In code units.

using Units = __m256i; ///< Sixteen code units.

[[gnu::target("avx2")]] inline Units load(const char16_t* units)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(units));
}

/// The code units at @p units, of which there are @p count, fewer than sixteen, and NULs behind
/// them. Reads no others.
[[gnu::target("avx2")]] inline Units loadFewer(const char16_t* units, std::ptrdiff_t count)
{
    constexpr std::ptrdiff_t HALF = STEP / 2;
    if (count < HALF) {
        return _mm256_zextsi128_si256(loadFewerThanEight(units, count));
    }
    return _mm256_set_m128i(loadFewerThanEight(units + HALF, count - HALF),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(units)));
}

[[gnu::target("avx2")]] inline void store(char* out, __m128i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
}

/// @p VALUE in all places. It is loaded: where it is used, GCC would make it by three instructions.
template <std::uint16_t VALUE>
[[gnu::target("avx2")]] inline Units all()
{
    static constexpr std::uint32_t TWICE = VALUE * 0x10001u;
    Units units;
    asm("vpbroadcastd %1, %0" : "=x"(units) : "m"(TWICE));
    return units;
}

/// All bits of each code unit that is at most @p LIMIT, as an unsigned number.
template <std::uint16_t LIMIT>
[[gnu::target("avx2")]] inline Units atMost(Units units)
{
    return _mm256_cmpeq_epi16(_mm256_min_epu16(units, all<LIMIT>()), units);
}

/// All bits of each code unit that has @p PATTERN in the bits of @p MASK.
template <std::uint16_t MASK, std::uint16_t PATTERN>
[[gnu::target("avx2")]] inline Units matching(Units units)
{
    return _mm256_cmpeq_epi16(_mm256_and_si256(units, all<MASK>()), all<PATTERN>());
}

/// Whether all code units have only zeros in the bits of @p MASK.
template <std::uint16_t MASK>
[[gnu::target("avx2")]] inline bool areClear(Units units)
{
    return _mm256_testz_si256(units, all<MASK>()) != 0;
}

[[gnu::target("avx2")]] inline bool isNone(Units mask)
{
    return _mm256_testz_si256(mask, mask) != 0;
}

/// Two equal bits for each code unit.
[[gnu::target("avx2")]] inline std::uint32_t bitsOf(Units mask)
{
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(mask));
}

[[gnu::target("avx2")]] inline Units select(Units mask, Units ifSet, Units ifClear)
{
    return _mm256_blendv_epi8(ifClear, ifSet, mask);
}

[[gnu::target("avx2")]] inline __m128i close(const Shuffles& shuffles, __m128i slots, unsigned bits)
{
    return _mm_shuffle_epi8(
        slots, _mm_load_si128(reinterpret_cast<const __m128i*>(shuffles[bits].data())));
}

/// The second and last byte of each code unit that is below 1000, in a slot of two bytes.
///
/// @param marks the bits of the bytes that tell their kind.
[[gnu::target("avx2")]] inline Units twoByteSlots(Units units, Units marks)
{
    const Units second = _mm256_srli_epi16(units, 6);
    const Units last = _mm256_and_si256(_mm256_slli_epi16(units, 8), all<0x3F00>());
    return _mm256_or_si256(_mm256_or_si256(second, last), marks);
}

/// Writes sixteen slots of two bytes. A bit says that only the first byte of its slot is kept.
[[gnu::target("avx2,popcnt")]] inline char* closeTwoByteSlots(Units slots, unsigned lowBits,
                                                              unsigned highBits, char* out)
{
    store(out, close(CLOSE_TWO_BYTE_SLOTS, _mm256_castsi256_si128(slots), lowBits));
    out += STEP - std::popcount(lowBits);
    store(out, close(CLOSE_TWO_BYTE_SLOTS, _mm256_extracti128_si256(slots, 1), highBits));
    return out + STEP - std::popcount(highBits);
}

/// Writes sixteen code units of one byte, where @p ascii is set, or two.
[[gnu::target("avx2,popcnt")]] inline char* writeTwoBytes(Units units, Units ascii, Units marks,
                                                          char* out)
{
    const std::uint32_t bits = bitsOf(_mm256_packs_epi16(ascii, ascii));
    return closeTwoByteSlots(select(ascii, units, twoByteSlots(units, marks)), bits & 0xFF,
                             bits >> 24, out);
}

/// Writes 32 code units of one byte or two.
[[gnu::target("avx2,popcnt")]] inline char* writeTwoBytes(Units units, Units after, char* out)
{
    const Units ascii = _mm256_cmpgt_epi16(all<0x80>(), units);
    const Units asciiAfter = _mm256_cmpgt_epi16(all<0x80>(), after);
    // Packing goes by halves: of the units, of those after them, and so on.
    const std::uint32_t bits = bitsOf(_mm256_packs_epi16(ascii, asciiAfter));
    out = closeTwoByteSlots(select(ascii, units, twoByteSlots(units, all<0x80C0>())), bits & 0xFF,
                            bits >> 16 & 0xFF, out);
    return closeTwoByteSlots(select(asciiAfter, after, twoByteSlots(after, all<0x80C0>())),
                             bits >> 8 & 0xFF, bits >> 24, out);
}

/// Slots of four bytes, of which the first three are used: in each half of the vectors, those of
/// four code units, and those of the four after them.
struct FourByteSlots
{
    Units even;
    Units odd;
};

/// @param marks the bits of the first and second byte that tell their kind.
[[gnu::target("avx2")]] inline FourByteSlots fourByteSlots(Units units, Units marks, Units last)
{
    const Units first = _mm256_srli_epi16(units, 12);
    const Units second = _mm256_and_si256(_mm256_slli_epi16(units, 2), all<0x3F00>());
    const Units firstTwo = _mm256_or_si256(_mm256_or_si256(first, second), marks);
    return {_mm256_unpacklo_epi16(firstTwo, last), _mm256_unpackhi_epi16(firstTwo, last)};
}

/// Writes four slots of four bytes.
[[gnu::target("avx2,popcnt")]] inline char* closeFourByteSlots(__m128i slots, unsigned dropped,
                                                               char* out)
{
    store(out, close(CLOSE_FOUR_BYTE_SLOTS, slots, dropped));
    return out + 3 * 4 - std::popcount(dropped);
}

/// The last byte of each code unit's encoding if that has more than one.
[[gnu::target("avx2")]] inline Units lastByte(Units units)
{
    return _mm256_or_si256(_mm256_and_si256(units, all<0x3F>()), all<0x80>());
}

/// Writes sixteen code units of three bytes.
[[gnu::target("avx2")]] inline char* writeThreeBytes(Units units, char* out)
{
    constexpr int BYTES = 3 * 4; // of four code units
    const Units close = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    FourByteSlots slots = fourByteSlots(units, all<0x80E0>(), lastByte(units));
    slots.even = _mm256_shuffle_epi8(slots.even, close);
    slots.odd = _mm256_shuffle_epi8(slots.odd, close);
    store(out, _mm256_castsi256_si128(slots.even));
    store(out + BYTES, _mm256_castsi256_si128(slots.odd));
    store(out + 2 * BYTES, _mm256_extracti128_si256(slots.even, 1));
    store(out + 3 * BYTES, _mm256_extracti128_si256(slots.odd, 1));
    return out + 4 * BYTES;
}

/// Writes sixteen code units of one byte, where @p ascii is set, two, where @p twoBytes is set, or
/// three. @p twoBytes is set where @p ascii is.
[[gnu::target("avx2,popcnt")]] inline char* writeMixed(Units units, Units ascii, Units twoBytes,
                                                       Units marks, char* out)
{
    const FourByteSlots slots = fourByteSlots(units, marks, select(ascii, units, lastByte(units)));
    const std::uint32_t bits =
        bitsOf(_mm256_or_si256(ascii, _mm256_and_si256(twoBytes, all<0xFF00>())));
    out = closeFourByteSlots(_mm256_castsi256_si128(slots.even), bits & 0xFF, out);
    out = closeFourByteSlots(_mm256_castsi256_si128(slots.odd), bits >> 8 & 0xFF, out);
    out = closeFourByteSlots(_mm256_extracti128_si256(slots.even, 1), bits >> 16 & 0xFF, out);
    return closeFourByteSlots(_mm256_extracti128_si256(slots.odd, 1), bits >> 24, out);
}

/// What a step has done.
struct Step
{
    std::ptrdiff_t read; ///< In code units. Zero if one of them is a surrogate without its other
                         ///< half.
    char* written;
};

/// Encodes sixteen code units, among them surrogates. Leaves the last one if it is a high
/// surrogate, so that no pair lies in two steps.
[[gnu::target("avx2,popcnt")]] inline Step encodePairs(Units units, Units surrogates, char* out)
{
    const Units high = matching<0xFC00, 0xD800>(units);
    const Units low = _mm256_xor_si256(surrogates, high);
    const std::uint32_t highBits = bitsOf(high);
    if (bitsOf(low) != highBits << 2) {
        return {0, out};
    }
    const Units previous =
        _mm256_alignr_epi8(units, _mm256_permute2x128_si256(units, units, 0x08), 14);
    // Numbers whose bits are where those of any code unit of two bytes are.
    const Units bits = _mm256_andnot_si256(_mm256_and_si256(surrogates, all<0xFC00>()), units);
    const Units ofHigh = _mm256_srli_epi16(_mm256_add_epi16(bits, all<0x40>()), 2);
    const Units ofPrevious =
        _mm256_and_si256(_mm256_slli_epi16(previous, 10), _mm256_and_si256(low, all<0x0C00>()));
    const Units numbers = select(high, ofHigh, _mm256_or_si256(bits, ofPrevious));
    const Units ascii = atMost<0x7F>(units);
    const Units twoBytes = _mm256_or_si256(atMost<0x7FF>(units), surrogates);
    // What turns the mark C0 of a second byte into F0 and 80.
    const Units marks =
        _mm256_or_si256(_mm256_and_si256(high, all<0x30>()), _mm256_and_si256(low, all<0x40>()));
    if (bitsOf(twoBytes) == 0xFFFFFFFF) {
        out = writeTwoBytes(numbers, ascii, _mm256_xor_si256(marks, all<0x80C0>()), out);
    } else {
        const Units marksOfTwo = _mm256_and_si256(twoBytes, all<0x4000>());
        out = writeMixed(numbers, ascii, twoBytes,
                         _mm256_xor_si256(_mm256_or_si256(marksOfTwo, all<0x80E0>()),
                                          _mm256_slli_epi16(marks, 8)),
                         out);
    }
    // A branch, so that the next load need not wait for these bits.
    if (highBits >> 31 != 0) [[unlikely]] {
        return {STEP - 1, out - 2};
    }
    return {STEP, out};
}

/// Encodes sixteen code units. Inlined even if the compiler would not, so that the loop keeps its
/// constants in registers.
[[gnu::always_inline, gnu::target("avx2,popcnt")]] inline Step encodeStep(Units units, char* out)
{
    if (areClear<0xF800>(units)) {
        const Units ascii = _mm256_cmpgt_epi16(all<0x80>(), units);
        return {STEP, writeTwoBytes(units, ascii, all<0x80C0>(), out)};
    }
    const Units surrogates = matching<0xF800, 0xD800>(units);
    if (!isNone(surrogates)) {
        return encodePairs(units, surrogates, out);
    }
    const Units twoBytes = atMost<0x7FF>(units);
    if (isNone(twoBytes)) {
        return {STEP, writeThreeBytes(units, out)};
    }
    const Units marks = _mm256_or_si256(_mm256_and_si256(twoBytes, all<0x4000>()), all<0x80E0>());
    return {STEP, writeMixed(units, atMost<0x7F>(units), twoBytes, marks, out)};
}

[[gnu::target("avx2,popcnt")]] EncodedUtf8 encode(const char16_t* first, const char16_t* last,
                                                  char* out)
{
    while (last - first >= STEP) {
        const Units units = load(first);
        if (last - first >= 2 * STEP) {
            const Units after = load(first + STEP);
            const Units either = _mm256_or_si256(units, after);
            if (areClear<0xFF80>(either)) {
                const __m256i bytes = _mm256_packus_epi16(units, after);
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(out),
                                    _mm256_permute4x64_epi64(bytes, 0b11'01'10'00));
                first += 2 * STEP;
                out += 2 * STEP;
                continue;
            }
            if (areClear<0xF800>(either)) {
                out = writeTwoBytes(units, after, out);
                first += 2 * STEP;
                continue;
            }
        }
        const Step step = encodeStep(units, out);
        if (step.read == 0) {
            return encodeUtf8Portable(first, last, out);
        }
        first += step.read;
        out = step.written;
    }
    if (first != last) {
        const Step step = encodeStep(loadFewer(first, last - first), out);
        if (step.read == 0) {
            return encodeUtf8Portable(first, last, out);
        }
        // The NULs behind the end of the text have given one byte each.
        out = step.written - (STEP - (last - first));
    }
    return {last, out};
}

} // namespace

Utf8Encoder utf8EncoderForAvx2()
{
    return canUse(KernelLevel::Avx2) ? encode : nullptr;
}

} // namespace tarn::text
