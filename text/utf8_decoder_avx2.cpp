// UTF-8 to UTF-16 with vectors of 32 bytes.

#include "text/kernel_level.hpp"
#include "text/utf8_decoder.hpp"
#include "text/utf8_decoder_steps.hpp"

#include <algorithm>
#include <bit>
#include <immintrin.h>

namespace tarn::text {

namespace {

using Bytes = __m256i;
using Units = __m256i; ///< Sixteen code units.

[[gnu::target("avx2")]] inline Bytes load(const char* bytes)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}

[[gnu::target("avx2")]] inline Bytes allBytes(unsigned value)
{
    return _mm256_set1_epi8(static_cast<char>(value));
}

[[gnu::target("avx2")]] inline Units allUnits(unsigned value)
{
    return _mm256_set1_epi16(static_cast<short>(value));
}

/// One bit of each byte, @p places to the right of the uppermost.
[[gnu::target("avx2")]] inline std::uint32_t bitsOf(Bytes bytes, int places)
{
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_slli_epi16(bytes, places)));
}

[[gnu::target("avx2")]] inline bool isAscii(Bytes bytes)
{
    return _mm256_testz_si256(bytes, allBytes(0x80)) != 0;
}

/// What @p table has for the lower half of each byte below 80; zero for the other bytes.
[[gnu::target("avx2")]] inline Bytes lookUp(const HalfByteTable& table, Bytes bytes)
{
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(
                                   _mm_loadu_si128(reinterpret_cast<const __m128i*>(table.data()))),
                               bytes);
}

[[gnu::target("avx2")]] inline Bytes upperHalves(Bytes bytes)
{
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), allBytes(0xF));
}

/// Whether no lead byte has a byte after it that makes it ill-formed.
[[gnu::target("avx2")]] inline bool arePairsWellFormed(Bytes previous, Bytes bytes)
{
    const Bytes byLead = _mm256_and_si256(
        lookUp(FAULTS.byUpperHalfOfLead, upperHalves(previous)),
        lookUp(FAULTS.byLowerHalfOfLead, _mm256_and_si256(previous, allBytes(0x3F))));
    const Bytes byNext = lookUp(FAULTS.byUpperHalfOfNext, upperHalves(bytes));
    return _mm256_testz_si256(byLead, byNext) != 0;
}

[[gnu::target("avx2")]] inline void storeAscii(Bytes bytes, char16_t* out)
{
    const __m128i halves[] = {_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1)};
    for (const __m128i half : halves) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_cvtepu8_epi16(half));
        out += STEP / 2;
    }
}

/// The code units that would end with each byte: those of the bytes 0 to 7 and 16 to 23, and those
/// of the bytes 8 to 15 and 24 to 31.
struct StepUnits
{
    Units even;
    Units odd;
};

/// The code units of characters of up to three bytes, and the bits of four below the uppermost.
///
/// @param previous,third the byte one place before each, and two places before.
[[gnu::target("avx2")]] inline StepUnits unitsOf(Bytes bytes, Bytes previous, Bytes third)
{
    const Bytes zero = _mm256_setzero_si256();
    const Bytes own = _mm256_and_si256(bytes, allBytes(0x7F));
    const Bytes ofPrevious = _mm256_and_si256(_mm256_and_si256(previous, allBytes(0x3F)),
                                              _mm256_cmpgt_epi8(zero, bytes)); // not for ASCII
    const Bytes ofThird = _mm256_subs_epu8(third, allBytes(0xE0));
    const Units weights = allUnits(0x4001); // own + 40 * ofPrevious, in hexadecimal
    return {_mm256_or_si256(_mm256_maddubs_epi16(_mm256_unpacklo_epi8(own, ofPrevious), weights),
                            _mm256_slli_epi16(_mm256_unpacklo_epi8(zero, ofThird), 4)),
            _mm256_or_si256(_mm256_maddubs_epi16(_mm256_unpackhi_epi8(own, ofPrevious), weights),
                            _mm256_slli_epi16(_mm256_unpackhi_epi8(zero, ofThird), 4))};
}

/// Puts the halves of surrogate pairs where the masks are set.
[[gnu::target("avx2")]] inline Units putPairs(Units units, Units isHigh, Units isLow)
{
    const Units high = _mm256_add_epi16(_mm256_srli_epi16(units, 4), allUnits(0xD7C0));
    const Units low = _mm256_or_si256(_mm256_and_si256(units, allUnits(0x3FF)), allUnits(0xDC00));
    return _mm256_blendv_epi8(_mm256_blendv_epi8(units, high, isHigh), low, isLow);
}

/// @param third,fourth the byte two places before each, and three places before.
[[gnu::target("avx2")]] inline StepUnits putPairs(StepUnits units, Bytes third, Bytes fourth)
{
    const Bytes limit = allBytes(0xF0);
    const Bytes isHigh = _mm256_cmpeq_epi8(_mm256_max_epu8(third, limit), third);
    const Bytes isLow = _mm256_cmpeq_epi8(_mm256_max_epu8(fourth, limit), fourth);
    return {putPairs(units.even, _mm256_unpacklo_epi8(isHigh, isHigh),
                     _mm256_unpacklo_epi8(isLow, isLow)),
            putPairs(units.odd, _mm256_unpackhi_epi8(isHigh, isHigh),
                     _mm256_unpackhi_epi8(isLow, isLow))};
}

/// Writes those of eight code units that have a bit in @p kept.
[[gnu::target("avx2,popcnt")]] inline char16_t* writeKept(__m128i units, unsigned kept,
                                                          char16_t* out)
{
    const auto* const shuffle = reinterpret_cast<const __m128i*>(CLOSE_GAPS[kept].data());
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                     _mm_shuffle_epi8(units, _mm_loadu_si128(shuffle)));
    return out + std::popcount(kept);
}

[[gnu::target("avx2,popcnt")]] inline char16_t* writeKept(StepUnits units, std::uint32_t kept,
                                                          char16_t* out)
{
    out = writeKept(_mm256_castsi256_si128(units.even), kept & 0xFF, out);
    out = writeKept(_mm256_castsi256_si128(units.odd), kept >> 8 & 0xFF, out);
    out = writeKept(_mm256_extracti128_si256(units.even, 1), kept >> 16 & 0xFF, out);
    return writeKept(_mm256_extracti128_si256(units.odd, 1), kept >> 24, out);
}

/// The classes that have occurred in the steps so far.
class Occurred
{
public:
    [[gnu::target("avx2")]] Occurred() : bits(_mm256_setzero_si256()) {}

    [[gnu::target("avx2")]] void addAscii(Bytes bytes)
    {
        bits = _mm256_or_si256(bits,
                               _mm256_and_si256(lookUp(CLASSES.byLowerHalf, bytes),
                                                lookUp(CLASSES.byUpperHalf, upperHalves(bytes))));
    }

    /// Adds U+FFFE and U+FFFF, the three bytes EF BF BE and EF BF BF.
    [[gnu::target("avx2")]] void addNonCharacters(Bytes bytes, Bytes previous, Bytes third)
    {
        const Bytes areLast = _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, allBytes(0xBE)), bytes);
        const Bytes follow = _mm256_and_si256(_mm256_cmpeq_epi8(previous, allBytes(0xBF)),
                                              _mm256_cmpeq_epi8(third, allBytes(0xEF)));
        bits = _mm256_or_si256(
            bits, _mm256_and_si256(_mm256_and_si256(areLast, follow), allBytes(FORBIDDEN)));
    }

    [[gnu::target("avx2")]] CharacterClasses classes() const
    {
        return classesOf(bitsInBytes(
            _mm_or_si128(_mm256_castsi256_si128(bits), _mm256_extracti128_si256(bits, 1))));
    }

private:
    Bytes bits;
};

/// Does the work of a step of ASCII.
template <bool DECODE>
[[gnu::target("avx2")]] inline void takeAscii(Bytes bytes, char16_t* out, Occurred& occurred)
{
    if constexpr (DECODE) {
        storeAscii(bytes, out);
    } else {
        occurred.addAscii(bytes);
    }
}

/// Takes ASCII as long as there are two steps of it.
/// @returns where it stopped.
template <bool DECODE>
[[gnu::target("avx2")]] inline const char* takeAscii(const char* first, const char* last,
                                                     char16_t* out, Occurred& occurred)
{
    for (; last - first >= 2 * STEP; first += 2 * STEP, out += DECODE ? 2 * STEP : 0) {
        const Bytes one = load(first);
        const Bytes other = load(first + STEP);
        if (!isAscii(_mm256_or_si256(one, other))) {
            break;
        }
        takeAscii<DECODE>(one, out, occurred);
        takeAscii<DECODE>(other, out + (DECODE ? STEP : 0), occurred);
    }
    return first;
}

/// Decodes, or else classifies.
template <bool DECODE>
[[gnu::target("avx2,popcnt")]] Progress take(const char* first, const char* last, char16_t* out)
{
    Occurred occurred;
    // Of the last step that is not of ASCII. Nothing goes on from it past a step of ASCII.
    Characters before;
    Bytes bytesBefore = _mm256_setzero_si256();
    while (first != last) {
        const std::ptrdiff_t count = std::min(last - first, STEP);
        Bytes bytes;
        if (count == STEP) {
            bytes = load(first);
        } else {
            const StepBytes halves = loadLast(first, static_cast<std::size_t>(count));
            bytes = _mm256_set_m128i(halves.upper, halves.lower);
        }
        if (isAscii(bytes) && before.areComplete()) {
            takeAscii<DECODE>(bytes, out, occurred);
            first += count;
            out += DECODE ? count : 0;
            const char* const end = takeAscii<DECODE>(first, last, out, occurred);
            out += DECODE ? end - first : 0;
            first = end;
            continue;
        }
        const Characters characters(before, bitsOf(bytes, 0), bitsOf(bytes, 1), bitsOf(bytes, 2),
                                    bitsOf(bytes, 3));
        const Bytes middle = _mm256_permute2x128_si256(bytesBefore, bytes, 0x21);
        const Bytes previous = _mm256_alignr_epi8(bytes, middle, 15);
        if (!characters.haveTheirBytes() || !arePairsWellFormed(previous, bytes)) {
            break;
        }
        const Bytes third = _mm256_alignr_epi8(bytes, middle, 14);
        if constexpr (DECODE) {
            StepUnits units = unitsOf(bytes, previous, third);
            if (characters.includePairs()) {
                units = putPairs(units, third, _mm256_alignr_epi8(bytes, middle, 13));
            }
            // Each space after the end of the text has given one unit.
            out = writeKept(units, characters.ends(), out) - (STEP - count);
        } else {
            occurred.addAscii(bytes);
            occurred.addNonCharacters(bytes, previous, third);
        }
        first += count;
        before = characters;
        bytesBefore = bytes;
    }
    const Progress progress{first, out, DECODE ? NO_CLASSES : occurred.classes()};
    return first == last && before.areComplete()
               ? progress
               : goOnPlain<DECODE>(progress, before.areComplete(), last);
}

} // namespace

Utf8DecoderLevel utf8DecoderForAvx2()
{
    return decoderLevel<take<true>, take<false>>("AVX2", canUse(KernelLevel::Avx2));
}

} // namespace tarn::text
