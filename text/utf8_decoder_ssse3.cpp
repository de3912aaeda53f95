// UTF-8 to UTF-16 with two vectors of 16 bytes in a step. The code units are made as by the decoder
// for AVX2.

#include "text/kernel_level.hpp"
#include "text/utf8_decoder.hpp"
#include "text/utf8_decoder_steps.hpp"

#include <algorithm>
#include <bit>
#include <immintrin.h>

namespace tarn::text {

namespace {

using Bytes = __m128i;
using Units = __m128i; ///< Eight code units.

Bytes load(const char* bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

Bytes allBytes(unsigned value)
{
    return _mm_set1_epi8(static_cast<char>(value));
}

Units allUnits(unsigned value)
{
    return _mm_set1_epi16(static_cast<short>(value));
}

/// One bit of each byte, @p places to the right of the uppermost.
std::uint32_t bitsOf(const StepBytes& bytes, int places)
{
    const auto lower =
        static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_slli_epi16(bytes.lower, places)));
    const auto upper =
        static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_slli_epi16(bytes.upper, places)));
    return lower | upper << 16;
}

bool isAscii(const StepBytes& bytes)
{
    return _mm_movemask_epi8(_mm_or_si128(bytes.lower, bytes.upper)) == 0;
}

/// What @p table has for the lower half of each byte below 80; zero for the other bytes.
[[gnu::target("ssse3")]] Bytes lookUp(const HalfByteTable& table, Bytes bytes)
{
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table.data())), bytes);
}

Bytes upperHalves(Bytes bytes)
{
    return _mm_and_si128(_mm_srli_epi16(bytes, 4), allBytes(0xF));
}

/// Not zero where a byte makes the lead byte before it ill-formed.
[[gnu::target("ssse3")]] Bytes faultsOfPairs(Bytes previous, Bytes bytes)
{
    const Bytes byLead =
        _mm_and_si128(lookUp(FAULTS.byUpperHalfOfLead, upperHalves(previous)),
                      lookUp(FAULTS.byLowerHalfOfLead, _mm_and_si128(previous, allBytes(0x3F))));
    return _mm_and_si128(byLead, lookUp(FAULTS.byUpperHalfOfNext, upperHalves(bytes)));
}

bool isZero(Bytes bytes)
{
    return _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())) == 0xFFFF;
}

void store(char16_t* out, Units units)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), units);
}

void storeAscii(const StepBytes& bytes, char16_t* out)
{
    const Bytes zero = _mm_setzero_si128();
    store(out, _mm_unpacklo_epi8(bytes.lower, zero));
    store(out + 8, _mm_unpackhi_epi8(bytes.lower, zero));
    store(out + 16, _mm_unpacklo_epi8(bytes.upper, zero));
    store(out + 24, _mm_unpackhi_epi8(bytes.upper, zero));
}

/// Puts the halves of surrogate pairs where the masks are set.
Units putPairs(Units units, Units isHigh, Units isLow)
{
    const Units high = _mm_add_epi16(_mm_srli_epi16(units, 4), allUnits(0xD7C0));
    const Units low = _mm_or_si128(_mm_and_si128(units, allUnits(0x3FF)), allUnits(0xDC00));
    const Units others = _mm_andnot_si128(_mm_or_si128(isHigh, isLow), units);
    return _mm_or_si128(others,
                        _mm_or_si128(_mm_and_si128(isHigh, high), _mm_and_si128(isLow, low)));
}

/// The code units that would end with each of 16 bytes.
struct HalfUnits
{
    Units lower;
    Units upper;
};

/// @param before the 16 bytes before @p bytes.
[[gnu::target("ssse3")]] inline HalfUnits unitsOf(Bytes before, Bytes bytes, bool includePairs)
{
    const Bytes zero = _mm_setzero_si128();
    const Bytes previous = _mm_alignr_epi8(bytes, before, 15);
    const Bytes third = _mm_alignr_epi8(bytes, before, 14);
    const Bytes own = _mm_and_si128(bytes, allBytes(0x7F));
    const Bytes ofPrevious = _mm_and_si128(_mm_and_si128(previous, allBytes(0x3F)),
                                           _mm_cmplt_epi8(bytes, zero)); // not for ASCII
    const Bytes ofThird = _mm_subs_epu8(third, allBytes(0xE0));
    const Units weights = allUnits(0x4001); // own + 40 * ofPrevious, in hexadecimal
    const HalfUnits units = {
        _mm_or_si128(_mm_maddubs_epi16(_mm_unpacklo_epi8(own, ofPrevious), weights),
                     _mm_slli_epi16(_mm_unpacklo_epi8(zero, ofThird), 4)),
        _mm_or_si128(_mm_maddubs_epi16(_mm_unpackhi_epi8(own, ofPrevious), weights),
                     _mm_slli_epi16(_mm_unpackhi_epi8(zero, ofThird), 4))};
    if (!includePairs) {
        return units;
    }
    const Bytes fourth = _mm_alignr_epi8(bytes, before, 13);
    const Bytes limit = allBytes(0xF0);
    const Bytes isHigh = _mm_cmpeq_epi8(_mm_max_epu8(third, limit), third);
    const Bytes isLow = _mm_cmpeq_epi8(_mm_max_epu8(fourth, limit), fourth);
    return {
        putPairs(units.lower, _mm_unpacklo_epi8(isHigh, isHigh), _mm_unpacklo_epi8(isLow, isLow)),
        putPairs(units.upper, _mm_unpackhi_epi8(isHigh, isHigh), _mm_unpackhi_epi8(isLow, isLow))};
}

/// Writes those of eight code units that have a bit in @p kept.
[[gnu::target("ssse3,popcnt")]] inline char16_t* writeKept(Units units, unsigned kept,
                                                           char16_t* out)
{
    const auto* const shuffle = reinterpret_cast<const __m128i*>(CLOSE_GAPS[kept].data());
    store(out, _mm_shuffle_epi8(units, _mm_loadu_si128(shuffle)));
    return out + std::popcount(kept);
}

/// The classes that have occurred in the steps so far.
class Occurred
{
public:
    [[gnu::target("ssse3")]] void addAscii(const StepBytes& bytes)
    {
        bits = _mm_or_si128(bits, _mm_or_si128(bitsOfAscii(bytes.lower), bitsOfAscii(bytes.upper)));
    }

    /// Adds U+FFFE and U+FFFF, the three bytes EF BF BE and EF BF BF.
    ///
    /// @param before the 16 bytes before @p bytes.
    [[gnu::target("ssse3")]] void addNonCharacters(Bytes before, Bytes bytes)
    {
        const Bytes previous = _mm_alignr_epi8(bytes, before, 15);
        const Bytes third = _mm_alignr_epi8(bytes, before, 14);
        const Bytes areLast = _mm_cmpeq_epi8(_mm_max_epu8(bytes, allBytes(0xBE)), bytes);
        const Bytes follow = _mm_and_si128(_mm_cmpeq_epi8(previous, allBytes(0xBF)),
                                           _mm_cmpeq_epi8(third, allBytes(0xEF)));
        bits =
            _mm_or_si128(bits, _mm_and_si128(_mm_and_si128(areLast, follow), allBytes(FORBIDDEN)));
    }

    CharacterClasses classes() const { return classesOf(bitsInBytes(bits)); }

private:
    [[gnu::target("ssse3")]] static Bytes bitsOfAscii(Bytes bytes)
    {
        return _mm_and_si128(lookUp(CLASSES.byLowerHalf, bytes),
                             lookUp(CLASSES.byUpperHalf, upperHalves(bytes)));
    }

    Bytes bits = _mm_setzero_si128();
};

/// Decodes, or else classifies.
template <bool DECODE>
[[gnu::target("ssse3,popcnt")]] Progress take(const char* first, const char* last, char16_t* out)
{
    Occurred occurred;
    // Of the last step that is not of ASCII. Nothing goes on from it past a step of ASCII.
    Characters before;
    Bytes bytesBefore = _mm_setzero_si128();
    while (first != last) {
        const std::ptrdiff_t count = std::min(last - first, STEP);
        const StepBytes bytes = count == STEP ? StepBytes{load(first), load(first + STEP / 2)}
                                              : loadLast(first, static_cast<std::size_t>(count));
        if (isAscii(bytes) && before.areComplete()) {
            if constexpr (DECODE) {
                storeAscii(bytes, out);
                out += count;
            } else {
                occurred.addAscii(bytes);
            }
            first += count;
            continue;
        }
        const Characters characters(before, bitsOf(bytes, 0), bitsOf(bytes, 1), bitsOf(bytes, 2),
                                    bitsOf(bytes, 3));
        const Bytes faults =
            _mm_or_si128(faultsOfPairs(_mm_alignr_epi8(bytes.lower, bytesBefore, 15), bytes.lower),
                         faultsOfPairs(_mm_alignr_epi8(bytes.upper, bytes.lower, 15), bytes.upper));
        if (!characters.haveTheirBytes() || !isZero(faults)) {
            break;
        }
        if constexpr (DECODE) {
            const bool includePairs = characters.includePairs();
            const HalfUnits lower = unitsOf(bytesBefore, bytes.lower, includePairs);
            const HalfUnits upper = unitsOf(bytes.lower, bytes.upper, includePairs);
            const std::uint32_t kept = characters.ends();
            out = writeKept(lower.lower, kept & 0xFF, out);
            out = writeKept(lower.upper, kept >> 8 & 0xFF, out);
            out = writeKept(upper.lower, kept >> 16 & 0xFF, out);
            out = writeKept(upper.upper, kept >> 24, out);
            out -= STEP - count; // each space after the end of the text has given one unit
        } else {
            occurred.addAscii(bytes);
            occurred.addNonCharacters(bytesBefore, bytes.lower);
            occurred.addNonCharacters(bytes.lower, bytes.upper);
        }
        first += count;
        before = characters;
        bytesBefore = bytes.upper;
    }
    const Progress progress{first, out, DECODE ? NO_CLASSES : occurred.classes()};
    return first == last && before.areComplete()
               ? progress
               : goOnPlain<DECODE>(progress, before.areComplete(), last);
}

} // namespace

Utf8DecoderLevel utf8DecoderForSsse3()
{
    return decoderLevel<take<true>, take<false>>("SSSE3", canUse(KernelLevel::Ssse3));
}

} // namespace tarn::text
