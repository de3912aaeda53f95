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

/// What has occurred in the steps so far.
template <bool CLASSIFY>
class Occurred
{
public:
    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] Occurred()
        : ofAscii(_mm512_setzero_si512()), largest(_mm512_setzero_si512())
    {
    }

    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] void add(Bytes bytes)
    {
        if constexpr (CLASSIFY) {
            const Bytes classes = _mm512_and_si512(lookUp(CLASSES.byLowerHalf, bytes),
                                                   lookUp(CLASSES.byUpperHalf, upperHalves(bytes)));
            ofAscii = _mm512_or_si512(ofAscii, classes);
        }
    }

    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] void add(StepUnits units)
    {
        if constexpr (CLASSIFY) {
            largest = _mm512_max_epu16(largest, _mm512_max_epu16(units.lower, units.upper));
        }
    }

    [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] CharacterClasses
    classes() const
    {
        if constexpr (!CLASSIFY) {
            return NO_CLASSES;
        }
        const bool isForbidden = _mm512_cmpgt_epu16_mask(largest, allUnits(LAST_CHARACTER)) != 0;
        const __m256i half =
            _mm256_or_si256(_mm512_castsi512_si256(ofAscii), _mm512_extracti64x4_epi64(ofAscii, 1));
        const __m128i quarter =
            _mm_or_si128(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1));
        return classesOf(bitsInBytes(quarter) | (isForbidden ? FORBIDDEN : NO_CLASSES));
    }

private:
    Bytes ofAscii;
    Units largest; ///< The largest code unit at each place.
};

/// Decodes ASCII as long as there are whole steps of it.
/// @returns where it stopped.
template <bool CLASSIFY>
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] inline const char*
decodeAscii(const char* first, const char* last, char16_t* out, Occurred<CLASSIFY>& occurred)
{
    for (; last - first >= WIDE_STEP; first += WIDE_STEP, out += WIDE_STEP) {
        const Bytes bytes = _mm512_loadu_si512(first);
        if (_mm512_movepi8_mask(bytes) != 0) {
            break;
        }
        storeAscii(bytes, out);
        occurred.add(bytes);
    }
    return first;
}

template <bool CLASSIFY>
[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2,popcnt")]] ClassifiedUtf8
decode(const char* first, const char* last, char16_t* out)
{
    Occurred<CLASSIFY> occurred;
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
            storeAscii(bytes, out);
            occurred.add(bytes);
            first += count;
            out += count;
            const char* const end = decodeAscii(first, last, out, occurred);
            out += end - first;
            first = end;
            before = {};
            bytesBefore = _mm512_setzero_si512();
            continue;
        }
        const Leads leads = Leads::of(bytes, longer);
        const Bytes middle = _mm512_alignr_epi32(bytes, bytesBefore, 12);
        const Bytes previous = _mm512_alignr_epi8(bytes, middle, 15);
        if ((leads.continuations() | continued) != (longer & ~leads.all) ||
            !arePairsWellFormed(previous, bytes)) {
            break;
        }
        StepUnits units = unitsOf(bytes, longer, previous, _mm512_alignr_epi8(bytes, middle, 14));
        const std::uint64_t low = leads.ofFour << 3 | before.ofFour >> 61;
        if (low != 0 || leads.ofFour != 0) {
            const std::uint64_t high = leads.ofFour << 2 | before.ofFour >> 62;
            units = {putPairs(units.lower, high, low),
                     putPairs(units.upper, high >> 32, low >> 32)};
        }
        occurred.add(bytes);
        occurred.add(units);
        const std::uint64_t kept = ~(leads.all | leads.ofThree << 1 | before.ofThree >> 63);
        out = writeKept(units.lower, kept, out);
        out = writeKept(units.upper, kept >> 32, out);
        out -= WIDE_STEP - count; // each space after the end of the text has given one unit
        first += count;
        before = leads;
        bytesBefore = bytes;
    }
    const bool isComplete = before.continuationsInNext() == 0;
    if (first == last && isComplete) {
        return {{first, out}, occurred.classes()};
    }
    ClassifiedUtf8 decoded = decodeFromStep(isComplete, first, last, out);
    decoded.classes = classesOf(decoded.classes | occurred.classes());
    return decoded;
}

} // namespace

Utf8DecoderLevel utf8DecoderForAvx512()
{
    const auto decodeAlone = [](const char* first, const char* last, char16_t* out) -> DecodedUtf8 {
        return decode<false>(first, last, out);
    };
    return canUse(KernelLevel::Avx512) ? Utf8DecoderLevel{"AVX-512", decodeAlone, decode<true>}
                                       : Utf8DecoderLevel{"AVX-512", nullptr, nullptr};
}

} // namespace tarn::text
