// What the decoders share. Private to them.
//
// A vector kernel takes steps of a fixed width, wherever characters begin, so that no step waits
// for the one before. Every byte gets the code unit that would end with it: the third byte of four
// a high surrogate, the fourth a low one. Then the gaps that the other bytes leave are closed. A
// step with ill-formed bytes is left to the plain decoder, which finds their exact place.
#pragma once

#include "text/utf8_decoder.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace tarn::text {

constexpr bool isContinuation(char byte)
{
    return (byte & 0xC0) == 0x80;
}

/// A table by half a byte, as a byte shuffle reads it.
using HalfByteTable = std::array<std::uint8_t, 16>;

constexpr CharacterClasses classOfAscii(unsigned byte)
{
    switch (byte) {
    case '\t':
    case '\n':
        return TAB_OR_LINE_FEED;
    case '\r':
        return CARRIAGE_RETURN;
    case '<':
    case '>':
    case '&':
    case '"':
    case '\'':
        return MARKUP;
    default:
        return byte < ' ' ? FORBIDDEN : NO_CLASSES;
    }
}

/// The classes that have a bit in @p bits, which are those of CharacterClasses twice: the upper
/// ones are for bytes whose upper half is odd, so that bytes with the same lower half differ.
constexpr CharacterClasses classesOf(unsigned bits)
{
    return static_cast<CharacterClasses>((bits | bits >> 4) & 0xF);
}

/// Bytes of ASCII belong to the classes that both tables have.
struct ClassTables
{
    HalfByteTable byUpperHalf{};
    HalfByteTable byLowerHalf{};
};
inline constexpr ClassTables CLASSES = [] {
    ClassTables classes;
    for (unsigned byte = 0; byte < 0x80; ++byte) {
        const unsigned bits = classOfAscii(byte) << ((byte & 0x10) != 0 ? 4 : 0);
        classes.byUpperHalf[byte >> 4] |= static_cast<std::uint8_t>(bits);
        classes.byLowerHalf[byte & 0xF] |= static_cast<std::uint8_t>(bits);
    }
    return classes;
}();

/// Lead bytes and bytes after them that do not begin a well-formed sequence, among all that are
/// followed by as many continuation bytes as they ask for.
struct IllFormedPairs
{
    unsigned firstLead;
    unsigned lastLead;
    unsigned firstNext;
    unsigned lastNext;
};
inline constexpr IllFormedPairs ILL_FORMED_PAIRS[] = {
    {0xC0, 0xC1, 0x80, 0xBF}, // overlong
    {0xE0, 0xE0, 0x80, 0x9F}, // overlong
    {0xED, 0xED, 0xA0, 0xBF}, // surrogates
    {0xF0, 0xF0, 0x80, 0x8F}, // overlong
    {0xF4, 0xF4, 0x90, 0xBF}, // above U+10FFFF
    {0xF5, 0xFF, 0x80, 0xBF}, // above U+10FFFF
};

/// A pair is ill-formed if the tables have a bit in common, which is the one of its row.
struct PairTables
{
    HalfByteTable byUpperHalfOfLead{};
    HalfByteTable byLowerHalfOfLead{};
    HalfByteTable byUpperHalfOfNext{};
};
inline constexpr PairTables FAULTS = [] {
    PairTables faults;
    unsigned bit = 1;
    for (const IllFormedPairs& pairs : ILL_FORMED_PAIRS) {
        for (unsigned lead = pairs.firstLead; lead <= pairs.lastLead; ++lead) {
            faults.byUpperHalfOfLead[lead >> 4] |= static_cast<std::uint8_t>(bit);
            faults.byLowerHalfOfLead[lead & 0xF] |= static_cast<std::uint8_t>(bit);
        }
        for (unsigned next = pairs.firstNext; next <= pairs.lastNext; ++next) {
            faults.byUpperHalfOfNext[next >> 4] |= static_cast<std::uint8_t>(bit);
        }
        bit <<= 1;
    }
    return faults;
}();

/// Shuffles of eight code units: by bits that say which of them are kept. What follows them is
/// not part of the result.
inline constexpr auto CLOSE_GAPS = [] {
    std::array<std::array<std::uint8_t, 16>, 256> shuffles{};
    for (unsigned bits = 0; bits < shuffles.size(); ++bits) {
        unsigned kept = 0;
        for (unsigned unit = 0; unit < 8; ++unit) {
            if ((bits >> unit & 1) != 0) {
                shuffles[bits][kept++] = static_cast<std::uint8_t>(2 * unit);
                shuffles[bits][kept++] = static_cast<std::uint8_t>(2 * unit + 1);
            }
        }
    }
    return shuffles;
}();

inline constexpr std::ptrdiff_t STEP = 32; ///< In bytes, for all but AVX-512.

/// Where the characters of a step are, a bit for each byte. The upper halves of the numbers are
/// about the next step.
class Characters
{
public:
    /// Those of plain ASCII.
    Characters() = default;

    /// @param before those of the step before, or of one before steps of ASCII.
    /// @param bits7,bits6,bits5,bits4 these bits of each byte.
    Characters(const Characters& before, std::uint32_t bits7, std::uint32_t bits6,
               std::uint32_t bits5, std::uint32_t bits4)
    {
        const std::uint64_t leads = bits7 & bits6;
        const std::uint64_t leadsOfThree = leads & bits5; // or four
        const std::uint64_t leadsOfFour = leadsOfThree & bits4;
        continuations = bits7 & ~bits6;
        expected = before.expected >> STEP | leads << 1 | leadsOfThree << 2 | leadsOfFour << 3;
        inside = before.inside >> STEP | leads | leadsOfThree << 1;
        lastOfFour = before.lastOfFour >> STEP | leadsOfFour << 3;
    }

    /// Whether each lead byte has as many continuation bytes as it asks for, as far as the step
    /// goes, and there are no others.
    bool haveTheirBytes() const { return static_cast<std::uint32_t>(expected) == continuations; }

    /// Whether no character goes on in the next step.
    bool areComplete() const { return expected >> STEP == 0; }

    /// Whether there are bytes of characters of four.
    bool includePairs() const { return lastOfFour != 0; }

    /// Which bytes are the last of a code unit.
    std::uint32_t ends() const { return ~static_cast<std::uint32_t>(inside); }

private:
    std::uint32_t continuations = 0;
    std::uint64_t expected = 0; ///< Which bytes have to be continuation bytes.
    std::uint64_t inside = 0;   ///< Which bytes are not the last of a code unit.
    std::uint64_t lastOfFour = 0;
};

// The next ones are always inlined: on their own they would be without AVX, and a kernel for AVX
// that calls such code is slow.

/// The bits that any of 16 bytes has.
[[gnu::always_inline]] inline unsigned bitsInBytes(__m128i bytes)
{
    bytes = _mm_or_si128(bytes, _mm_srli_si128(bytes, 8));
    bytes = _mm_or_si128(bytes, _mm_srli_si128(bytes, 4));
    bytes = _mm_or_si128(bytes, _mm_srli_si128(bytes, 2));
    bytes = _mm_or_si128(bytes, _mm_srli_si128(bytes, 1));
    return static_cast<unsigned>(_mm_cvtsi128_si32(bytes)) & 0xFF;
}

/// Loads @p count bytes, at most 8, and zeros after them.
[[gnu::always_inline]] inline std::uint64_t loadUpTo8(const char* bytes, std::size_t count)
{
    // The first ones and the last ones, which can be the same in part.
    const auto load = [bytes, count](auto number) {
        std::memcpy(&number, bytes, sizeof(number));
        const std::uint64_t firstOnes = number;
        std::memcpy(&number, bytes + count - sizeof(number), sizeof(number));
        return firstOnes | std::uint64_t{number} << 8 * (count - sizeof(number));
    };
    return count >= 4   ? load(std::uint32_t{})
           : count >= 2 ? load(std::uint16_t{})
           : count == 1 ? load(std::uint8_t{})
                        : 0;
}

/// Loads @p count bytes, at most 16, and zeros after them.
[[gnu::always_inline]] inline __m128i loadUpTo16(const char* bytes, std::size_t count)
{
    if (count == 16) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    }
    const std::size_t lower = std::min<std::size_t>(count, 8);
    return _mm_set_epi64x(static_cast<long long>(loadUpTo8(bytes + lower, count - lower)),
                          static_cast<long long>(loadUpTo8(bytes, lower)));
}

/// The bytes of a step.
struct StepBytes
{
    __m128i lower;
    __m128i upper;
};

/// Loads @p count bytes, fewer than a step has, and spaces after them, which belong to no class.
[[gnu::always_inline]] inline StepBytes loadLast(const char* bytes, std::size_t count)
{
    static constexpr auto PADDING = [] {
        std::array<char, 2 * STEP> padding{};
        std::fill(padding.begin() + STEP, padding.end(), ' ');
        return padding;
    }();
    const char* const padding = PADDING.data() + STEP - count;
    const std::size_t lower = std::min<std::size_t>(count, 16);
    return {_mm_or_si128(loadUpTo16(bytes, lower), loadUpTo16(padding, 16)),
            _mm_or_si128(loadUpTo16(bytes + lower, count - lower), loadUpTo16(padding + 16, 16))};
}

/// How far a kernel got. One that classifies writes nothing, one that decodes tells no classes.
struct Progress
{
    const char* read;
    char16_t* written;
    CharacterClasses classes;
};

/// The decoders of one level: the kernel that decodes and the one that classifies.
template <Progress (*DECODE)(const char*, const char*, char16_t*),
          Progress (*CLASSIFY)(const char*, const char*, char16_t*)>
Utf8DecoderLevel decoderLevel(std::string_view name, bool isUsable)
{
    const auto decode = [](const char* first, const char* last, char16_t* out) {
        const Progress progress = DECODE(first, last, out);
        return DecodedUtf8{progress.read, progress.written};
    };
    const auto classify = [](const char* first, const char* last) {
        const Progress progress = CLASSIFY(first, last, nullptr);
        return ClassifiedUtf8{progress.read, progress.classes};
    };
    return {name, isUsable ? +decode : nullptr, isUsable ? +classify : nullptr};
}

/// Goes on one code point at a time, from the beginning of a character.
///
/// @param progress at the beginning of a step.
/// @param isComplete whether the last character before that is complete.
template <bool DECODE>
Progress goOnPlain(Progress progress, bool isComplete, const char* last)
{
    const char* first = progress.read;
    if (!isComplete) {
        do {
            --first;
        } while (isContinuation(*first));
    }
    if constexpr (DECODE) {
        constexpr std::ptrdiff_t BYTES_OF_HIGH_SURROGATE = 3;
        const bool hasHalf = progress.read - first == BYTES_OF_HIGH_SURROGATE;
        const DecodedUtf8 decoded =
            portableUtf8Decoder().decode(first, last, progress.written - (hasHalf ? 1 : 0));
        return {decoded.read, decoded.written, progress.classes};
    } else {
        const ClassifiedUtf8 classified = portableUtf8Decoder().classify(first, last);
        return {classified.read, progress.written,
                classesOf(classified.classes | progress.classes)};
    }
}

} // namespace tarn::text
