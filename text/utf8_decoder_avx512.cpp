// UTF-8 to UTF-16 with vectors of 64 bytes. The code units are made as by the decoder for AVX2; one
// instruction closes the gaps between those that are kept.

#include "text/kernel_level.hpp"
#include "text/utf8_decoder.hpp"
#include "text/utf8_decoder_steps.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <immintrin.h>

namespace tarn::text {

namespace {

constexpr std::ptrdiff_t WIDE_STEP = 64; ///< In bytes.

using Bytes = __m512i;
using Units = __m512i; ///< 32 code units.

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline Bytes
allBytes(unsigned value)
{
    return _mm512_set1_epi8(static_cast<char>(value));
}

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline Units
allUnits(unsigned value)
{
    return _mm512_set1_epi16(static_cast<short>(value));
}

/// Where the lead bytes of a step are, a bit for each byte.
struct Leads
{
    std::uint64_t all = 0;
    std::uint64_t ofThree = 0; ///< Or four.
    std::uint64_t ofFour = 0;

    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] static Leads
    of(Bytes bytes, std::uint64_t longer)
    {
        const std::uint64_t all = longer & _mm512_test_epi8_mask(bytes, allBytes(0x40));
        const std::uint64_t ofThree = all & _mm512_test_epi8_mask(bytes, allBytes(0x20));
        return {all, ofThree, ofThree & _mm512_test_epi8_mask(bytes, allBytes(0x10))};
    }

    /// The bytes that have to be continuation bytes in this step, and in the next.
    std::uint64_t continuations() const { return all << 1 | ofThree << 2 | ofFour << 3; }
    std::uint64_t continuationsInNext() const { return all >> 63 | ofThree >> 62 | ofFour >> 61; }
};

/// What @p table has for the lower half of each byte below 80; zero for the other bytes.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline Bytes
lookUp(const HalfByteTable& table, Bytes bytes)
{
    return _mm512_shuffle_epi8(
        _mm512_broadcast_i32x4(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table.data()))),
        bytes);
}

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline Bytes
upperHalves(Bytes bytes)
{
    return _mm512_and_si512(_mm512_srli_epi16(bytes, 4), allBytes(0xF));
}

/// Whether no lead byte has a byte after it that makes it ill-formed.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline bool
arePairsWellFormed(Bytes previous, Bytes bytes)
{
    const Bytes byLead = _mm512_and_si512(
        lookUp(FAULTS.byUpperHalfOfLead, upperHalves(previous)),
        lookUp(FAULTS.byLowerHalfOfLead, _mm512_and_si512(previous, allBytes(0x3F))));
    return _mm512_test_epi8_mask(byLead, lookUp(FAULTS.byUpperHalfOfNext, upperHalves(bytes))) == 0;
}

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline void
storeAscii(Bytes bytes, char16_t* out)
{
    _mm512_storeu_si512(out, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes)));
    _mm512_storeu_si512(out + WIDE_STEP / 2,
                        _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1)));
}

/// The code units that would end with each byte.
struct StepUnits
{
    Units lower;
    Units upper;
};

/// Puts eight bytes each where unpacking makes the first half and the second half of a step of
/// them.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline Bytes
beforeUnpacking(Bytes bytes)
{
    return _mm512_permutexvar_epi64(_mm512_set_epi64(7, 3, 6, 2, 5, 1, 4, 0), bytes);
}

/// The code units of characters of up to three bytes, and the bits of four below the uppermost.
///
/// @param previous,third the byte one place before each, and two places before.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline StepUnits
unitsOf(Bytes bytes, std::uint64_t longer, Bytes previous, Bytes third)
{
    const Bytes own = beforeUnpacking(_mm512_and_si512(bytes, allBytes(0x7F)));
    const Bytes ofPrevious =
        beforeUnpacking(_mm512_maskz_mov_epi8(longer, _mm512_and_si512(previous, allBytes(0x3F))));
    const Bytes ofThird = beforeUnpacking(_mm512_subs_epu8(third, allBytes(0xE0)));
    const Bytes zero = _mm512_setzero_si512();
    const Units weights = allUnits(0x4001); // own + 40 * ofPrevious, in hexadecimal
    return {_mm512_or_si512(_mm512_maddubs_epi16(_mm512_unpacklo_epi8(own, ofPrevious), weights),
                            _mm512_slli_epi16(_mm512_unpacklo_epi8(zero, ofThird), 4)),
            _mm512_or_si512(_mm512_maddubs_epi16(_mm512_unpackhi_epi8(own, ofPrevious), weights),
                            _mm512_slli_epi16(_mm512_unpackhi_epi8(zero, ofThird), 4))};
}

/// Puts the halves of surrogate pairs where the masks are set.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline Units
putPairs(Units units, std::uint64_t isHigh, std::uint64_t isLow)
{
    const Units low = _mm512_and_si512(units, allUnits(0x3FF));
    units = _mm512_mask_add_epi16(units, static_cast<std::uint32_t>(isHigh),
                                  _mm512_srli_epi16(units, 4), allUnits(0xD7C0));
    return _mm512_mask_add_epi16(units, static_cast<std::uint32_t>(isLow), low, allUnits(0xDC00));
}

/// Writes the code units that have a bit in @p kept.
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline char16_t*
writeKept(Units units, std::uint64_t kept, char16_t* out)
{
    const auto bits = static_cast<std::uint32_t>(kept);
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi16(bits, units));
    return out + std::popcount(bits);
}

/// The classes that have occurred in the steps so far.
class Occurred
{
public:
    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] Occurred()
        : bits(_mm512_setzero_si512())
    {
    }

    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] void addAscii(Bytes bytes)
    {
        bits = _mm512_or_si512(bits,
                               _mm512_and_si512(lookUp(CLASSES.byLowerHalf, bytes),
                                                lookUp(CLASSES.byUpperHalf, upperHalves(bytes))));
    }

    /// Adds U+FFFE and U+FFFF, the three bytes EF BF BE and EF BF BF.
    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] void
    addNonCharacters(Bytes bytes, Bytes previous, Bytes third)
    {
        const std::uint64_t areThere = _mm512_cmpge_epu8_mask(bytes, allBytes(0xBE)) &
                                       _mm512_cmpeq_epi8_mask(previous, allBytes(0xBF)) &
                                       _mm512_cmpeq_epi8_mask(third, allBytes(0xEF));
        bits = _mm512_or_si512(bits, _mm512_maskz_mov_epi8(areThere, allBytes(FORBIDDEN)));
    }

    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] CharacterClasses
    classes() const
    {
        unsigned classes = NO_CLASSES;
        for (const unsigned one : {FORBIDDEN, TAB_OR_LINE_FEED, CARRIAGE_RETURN, MARKUP}) {
            const unsigned inBothHalves = one << 4 | one;
            classes |= _mm512_test_epi8_mask(bits, allBytes(inBothHalves)) != 0 ? one : 0;
        }
        return classesOf(classes);
    }

private:
    Bytes bits;
};

/// Does the work of a step of ASCII.
template <bool DECODE>
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline void
takeAscii(Bytes bytes, char16_t* out, Occurred& occurred)
{
    if constexpr (DECODE) {
        storeAscii(bytes, out);
    } else {
        occurred.addAscii(bytes);
    }
}

/// Takes ASCII as long as there are whole steps of it.
/// @returns where it stopped.
template <bool DECODE>
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline const char*
takeAscii(const char* first, const char* last, char16_t* out, Occurred& occurred)
{
    for (; last - first >= WIDE_STEP; first += WIDE_STEP, out += DECODE ? WIDE_STEP : 0) {
        const Bytes bytes = _mm512_loadu_si512(first);
        if (_mm512_movepi8_mask(bytes) != 0) {
            break;
        }
        takeAscii<DECODE>(bytes, out, occurred);
    }
    return first;
}

/// Decodes, or else classifies.
template <bool DECODE>
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] Progress
take(const char* first, const char* last, char16_t* out)
{
    Occurred occurred;
    // Of the last step that is not of ASCII. Nothing goes on from it past a step of ASCII.
    Leads before;
    Bytes bytesBefore = _mm512_setzero_si512();
    while (first != last) {
        const std::ptrdiff_t count = std::min(last - first, WIDE_STEP);
        const Bytes bytes =
            count == WIDE_STEP
                ? _mm512_loadu_si512(first)
                : _mm512_mask_loadu_epi8(allBytes(' '), (std::uint64_t{1} << count) - 1, first);
        const std::uint64_t longer = _mm512_movepi8_mask(bytes);
        const std::uint64_t continued = before.continuationsInNext();
        if (longer == 0 && continued == 0) {
            takeAscii<DECODE>(bytes, out, occurred);
            first += count;
            out += DECODE ? count : 0;
            const char* const end = takeAscii<DECODE>(first, last, out, occurred);
            out += DECODE ? end - first : 0;
            first = end;
            continue;
        }
        const Leads leads = Leads::of(bytes, longer);
        const Bytes middle = _mm512_alignr_epi32(bytes, bytesBefore, 12);
        const Bytes previous = _mm512_alignr_epi8(bytes, middle, 15);
        if ((leads.continuations() | continued) != (longer & ~leads.all) ||
            !arePairsWellFormed(previous, bytes)) {
            break;
        }
        const Bytes third = _mm512_alignr_epi8(bytes, middle, 14);
        if constexpr (DECODE) {
            StepUnits units = unitsOf(bytes, longer, previous, third);
            const std::uint64_t low = leads.ofFour << 3 | before.ofFour >> 61;
            if (low != 0 || leads.ofFour != 0) {
                const std::uint64_t high = leads.ofFour << 2 | before.ofFour >> 62;
                units = {putPairs(units.lower, high, low),
                         putPairs(units.upper, high >> 32, low >> 32)};
            }
            const std::uint64_t kept = ~(leads.all | leads.ofThree << 1 | before.ofThree >> 63);
            out = writeKept(units.lower, kept, out);
            out = writeKept(units.upper, kept >> 32, out);
            out -= WIDE_STEP - count; // each space after the end of the text has given one unit
        } else {
            occurred.addAscii(bytes);
            occurred.addNonCharacters(bytes, previous, third);
        }
        first += count;
        before = leads;
        bytesBefore = bytes;
    }
    const bool isComplete = before.continuationsInNext() == 0;
    const Progress progress{first, out, DECODE ? NO_CLASSES : occurred.classes()};
    return first == last && isComplete ? progress : goOnPlain<DECODE>(progress, isComplete, last);
}

} // namespace

Utf8DecoderLevel utf8DecoderForAvx512()
{
    return decoderLevel<take<true>, take<false>>("AVX-512", canUse(KernelLevel::Avx512));
}

} // namespace tarn::text
