// UTF-16 to UTF-8 with vectors of 64 bytes, 32 code units in a step. The bytes are those that the
// encoder for SSSE3 builds: one instruction takes them out of the bits of the code units, and
// another closes the gaps between those that are kept.

#include "text/kernel_level.hpp"
#include "text/utf8_encoder.hpp"

#include <array>
#include <bit>
#include <cstdint>
#include <immintrin.h>

namespace tarn::text {

namespace {

constexpr std::ptrdiff_t STEP = 32; ///< In code units.
constexpr unsigned DROPPED = 0xFF;  ///< No byte of UTF-8. Marks a byte that is not kept.

using Units = __m512i;      ///< 32 code units.
using Mask = std::uint32_t; ///< A bit for each code unit.
using Bytes = std::array<std::uint8_t, sizeof(__m512i)>;

/// @p VALUE in all places. It is loaded: where it is used, GCC would make it in a register first.
template <std::uint32_t VALUE>
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline __m512i
everywhere()
{
    static constexpr std::uint32_t IN_MEMORY = VALUE;
    __m512i values;
    asm("vpbroadcastd %1, %0" : "=v"(values) : "m"(IN_MEMORY));
    return values;
}

/// @p UNIT in all places.
template <std::uint16_t UNIT>
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline Units all()
{
    return everywhere<UNIT * 0x10001u>();
}

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline __m512i
load(const Bytes& bytes)
{
    return _mm512_loadu_si512(bytes.data());
}

/// Which code units have @p PATTERN in the bits of @p MASK.
template <std::uint16_t MASK, std::uint16_t PATTERN>
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline Mask
matching(Units units)
{
    return _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, all<MASK>()), all<PATTERN>());
}

/// Eight bytes of each 64 bits, which begin at the bits that @p shifts gives, with the bits of
/// @p mask kept and those of @p marks set.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline __m512i
extract(__m512i numbers, __m512i shifts, __m512i mask, __m512i marks)
{
    constexpr int AND_THEN_OR = 0xEA;
    return _mm512_ternarylogic_epi32(_mm512_multishift_epi64_epi8(shifts, numbers), mask, marks,
                                     AND_THEN_OR);
}

/// Writes all bytes but those that are DROPPED.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline char*
closeGaps(__m512i bytes, char* out)
{
    const std::uint64_t kept = _mm512_cmpneq_epi8_mask(bytes, all<DROPPED << 8 | DROPPED>());
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(kept, bytes));
    return out + std::popcount(kept);
}

/// Writes code units of one byte, where @p ascii is set, or two.
///
/// @param marks the bits of the two bytes that tell their kind.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline char*
writeTwoBytes(Units units, Mask ascii, Units marks, char* out)
{
    const __m512i shifts = _mm512_set1_epi64(0x3036'2026'1016'0006);
    const __m512i slots = extract(units, shifts, all<0x3F3F>(), marks);
    return closeGaps(_mm512_mask_add_epi16(slots, ascii, units, all<DROPPED << 8>()), out);
}

/// Writes sixteen code units of one byte, two or three.
///
/// @param marks the bits that tell the kind of the first two bytes from that of three bytes, and
///     all bits for a code unit of one byte.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline char*
writeHalf(__m256i units, __m256i marks, char* out)
{
    const __m512i wide = _mm512_cvtepu16_epi32(units);
    const __m512i wideMarks = _mm512_cvtepu16_epi32(marks);
    const __m512i shifts = _mm512_set1_epi64(0x0020'262C'0000'060C);
    const __m512i slots = extract(wide, shifts, everywhere<0x003F'3F0F>(),
                                  _mm512_or_si512(everywhere<0xFF80'80E0>(), wideMarks));
    const __mmask16 ascii = _mm512_cmpeq_epi32_mask(wideMarks, everywhere<0xFFFF>());
    return closeGaps(_mm512_mask_or_epi32(slots, ascii, wide, everywhere<0xFFFF'FF00>()), out);
}

/// Writes code units of one byte, two or three.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline char*
writeMixed(Units units, Units marks, char* out)
{
    out = writeHalf(_mm512_castsi512_si256(units), _mm512_castsi512_si256(marks), out);
    return writeHalf(_mm512_extracti64x4_epi64(units, 1), _mm512_extracti64x4_epi64(marks, 1), out);
}

/// How the bytes of a vector are taken out of code units that have three bytes each.
struct ThreeByteVector
{
    alignas(64) std::array<std::uint16_t, STEP> units{}; ///< Four for each eight bytes.
    alignas(64) Bytes shifts{};
    alignas(64) Bytes mask{};
    alignas(64) Bytes marks{};

    /// @param begin the place of the vector among all bytes.
    constexpr explicit ThreeByteVector(unsigned begin)
    {
        constexpr std::uint8_t SHIFTS[] = {12, 6, 0};
        constexpr std::uint8_t MASKS[] = {0x0F, 0x3F, 0x3F};
        constexpr std::uint8_t MARKS[] = {0xE0, 0x80, 0x80};
        for (unsigned byte = 0; byte < shifts.size(); ++byte) {
            const unsigned place = begin + byte;
            const unsigned firstUnit = (begin + byte / 8 * 8) / 3; // of the eight bytes
            shifts[byte] =
                static_cast<std::uint8_t>(16 * (place / 3 - firstUnit) + SHIFTS[place % 3]);
            mask[byte] = MASKS[place % 3];
            marks[byte] = MARKS[place % 3];
            units[byte / 2] = static_cast<std::uint16_t>(firstUnit + byte / 2 % 4);
        }
    }
};

/// Writes code units of three bytes.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline char*
writeThreeBytes(Units units, char* out)
{
    constexpr std::ptrdiff_t BYTES = 3 * STEP;
    static constexpr ThreeByteVector VECTORS[] = {ThreeByteVector(0),
                                                  ThreeByteVector(sizeof(__m512i))};
    char* place = out;
    for (const ThreeByteVector& vector : VECTORS) {
        const __m512i spread =
            _mm512_permutexvar_epi16(_mm512_load_si512(vector.units.data()), units);
        _mm512_storeu_si512(
            place, extract(spread, load(vector.shifts), load(vector.mask), load(vector.marks)));
        place += sizeof(__m512i);
    }
    return out + BYTES;
}

/// What a step has done.
struct Step
{
    std::ptrdiff_t read; ///< In code units. Zero if one of them is a surrogate without its other
                         ///< half.
    char* written;
};

/// Encodes 32 code units, among them surrogates. Leaves the last one if it is a high surrogate, so
/// that no pair lies in two steps.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline Step
encodePairs(Units units, Mask ascii, Mask twoBytes, Mask surrogates, char* out)
{
    const Mask high = matching<0xFC00, 0xD800>(units);
    const Mask low = surrogates ^ high;
    if (low != high << 1) {
        return {0, out};
    }
    // The unit before each.
    const Units previous = _mm512_permutexvar_epi16(
        _mm512_set_epi16(30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14, 13, 12,
                         11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0),
        units);
    const Units ofPrevious = _mm512_and_si512(_mm512_slli_epi16(previous, 10), all<0x0C00>());
    // Numbers whose bits are where those of any code unit of two bytes are.
    Units numbers = _mm512_mask_sub_epi16(units, high, units, all<0xD800 - 0x40>());
    numbers = _mm512_mask_srli_epi16(numbers, high, numbers, 2);
    numbers = _mm512_mask_sub_epi16(numbers, low, numbers, all<0xDC00>());
    numbers = _mm512_mask_add_epi16(numbers, low, numbers, ofPrevious);
    // The marks of the second byte of each.
    Units second = _mm512_maskz_mov_epi16(twoBytes, all<0xC0>());
    second = _mm512_mask_mov_epi16(second, high, all<0xF0>());
    if ((twoBytes | surrogates) == 0xFFFFFFFF) {
        out = writeTwoBytes(numbers, ascii, _mm512_or_si512(second, all<0x8080>()), out);
    } else {
        second = _mm512_slli_epi16(second, 8);
        Units marks = _mm512_mask_add_epi16(second, twoBytes | surrogates, second, all<DROPPED>());
        marks = _mm512_mask_mov_epi16(marks, ascii, all<0xFFFF>());
        out = writeMixed(numbers, marks, out);
    }
    // A branch, so that the next load need not wait for these bits.
    if (high >> 31 != 0) [[unlikely]] {
        return {STEP - 1, out - 2};
    }
    return {STEP, out};
}

/// Encodes 32 code units. Inlined even if the compiler would not, so that the loop keeps its
/// constants in registers.
[[gnu::always_inline,
  gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] inline Step
encodeStep(Units units, char* out)
{
    const Mask ascii = _mm512_cmplt_epu16_mask(units, all<0x80>());
    const Mask twoBytes = _mm512_cmplt_epu16_mask(units, all<0x800>()); // or less
    if (twoBytes == 0xFFFFFFFF) {
        return {STEP, writeTwoBytes(units, ascii, all<0x80C0>(), out)};
    }
    const Mask surrogates = matching<0xF800, 0xD800>(units);
    if (surrogates != 0) {
        return encodePairs(units, ascii, twoBytes, surrogates, out);
    }
    if (twoBytes == 0) {
        return {STEP, writeThreeBytes(units, out)};
    }
    const Units marks = _mm512_maskz_mov_epi16(twoBytes, all<0x4000 | DROPPED>());
    return {STEP, writeMixed(units, _mm512_mask_mov_epi16(marks, ascii, all<0xFFFF>()), out)};
}

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] EncodedUtf8
encode(const char16_t* first, const char16_t* last, char* out)
{
    while (last - first >= STEP) {
        const Units units = _mm512_loadu_si512(first);
        if (_mm512_test_epi16_mask(units, all<0xFF80>()) == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_cvtepi16_epi8(units));
            first += STEP;
            out += STEP;
            continue;
        }
        const Step step = encodeStep(units, out);
        if (step.read == 0) {
            return encodeUtf8Portable(first, last, out);
        }
        first += step.read;
        out = step.written;
    }
    if (first != last) {
        // What is not present is not read, and counts as NUL.
        const Mask present = (Mask{1} << (last - first)) - 1;
        const Step step = encodeStep(_mm512_maskz_loadu_epi16(present, first), out);
        if (step.read == 0) {
            return encodeUtf8Portable(first, last, out);
        }
        // Each NUL has given one byte.
        out = step.written - (STEP - (last - first));
    }
    return {last, out};
}

} // namespace

Utf8Encoder utf8EncoderForAvx512()
{
    return canUse(KernelLevel::Avx512) ? encode : nullptr;
}

} // namespace tarn::text
