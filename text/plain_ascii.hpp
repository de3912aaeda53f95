// Finding and copying text that can be written as it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace tarn::text {

/// The mask of those of 16 bytes that markup is made of: < > & " '
inline __m128i isMarkup(__m128i bytes)
{
    const auto all = [](char byte) { return _mm_set1_epi8(byte); };
    const __m128i isAngle = _mm_cmpeq_epi8(_mm_or_si128(bytes, all('<' ^ '>')), all('>'));
    const __m128i isQuoteOrAnd = _mm_cmpeq_epi8(_mm_or_si128(bytes, all('"' ^ '&')), all('&'));
    const __m128i isApostrophe = _mm_cmpeq_epi8(bytes, all('\''));
    return _mm_or_si128(_mm_or_si128(isAngle, isQuoteOrAnd), isApostrophe);
}

/// The mask of those that are control characters below U+0020.
inline __m128i isControl(__m128i bytes)
{
    return _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(' ' - 1)), bytes);
}

/// The mask of those that are not printable ASCII, from U+0020 to U+007F, or that markup is made
/// of.
inline __m128i notPlainAscii(__m128i bytes)
{
    // As signed numbers those that are not ASCII are the smallest.
    return _mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(' ')), isMarkup(bytes));
}

/// A bit for each of the 16 bytes at @p text that is a control character or that markup is made of.
inline unsigned specialsOf(const char* text)
{
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(isControl(bytes), isMarkup(bytes))));
}

/// The most bytes that copyIfPlainAscii() takes.
inline constexpr std::size_t LONGEST_COPY = 64;

/// Four places that @p size bytes can be read from in words of one size, so that each byte is read,
/// if there is room for one to four words. They overlap: how many bytes there are is then no branch
/// for the processor to guess.
struct FourPlaces
{
    std::size_t second;
    std::size_t third;
    std::size_t fourth;

    static constexpr FourPlaces of(std::size_t size, std::size_t word)
    {
        const std::size_t second = size / (2 * word) * word;
        return {second, size - word - second, size - word};
    }
};

/// Copies @p size bytes, at most LONGEST_COPY, to @p out if they are all plain ASCII. Meant for
/// short text, where the calls that the kernels take would be most of the work.
/// @returns the place after them; null if they are not plain, and then what is written is
/// undefined.
inline char* copyIfPlainAscii(const char* text, std::size_t size, char* out)
{
    __m128i notPlain;
    if (size >= 16) {
        const auto load = [text](std::size_t place) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + place));
        };
        const auto store = [out](std::size_t place, __m128i bytes) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + place), bytes);
        };
        const auto [second, third, fourth] = FourPlaces::of(size, 16);
        const __m128i words[] = {load(0), load(second), load(third), load(fourth)};
        store(0, words[0]);
        store(second, words[1]);
        store(third, words[2]);
        store(fourth, words[3]);
        notPlain = _mm_or_si128(_mm_or_si128(notPlainAscii(words[0]), notPlainAscii(words[1])),
                                _mm_or_si128(notPlainAscii(words[2]), notPlainAscii(words[3])));
    } else if (size >= 4) {
        const auto load = [text](std::size_t place) {
            std::int32_t word = 0;
            std::memcpy(&word, text + place, sizeof(word));
            return word;
        };
        const auto store = [out](std::size_t place, std::int32_t word) {
            std::memcpy(out + place, &word, sizeof(word));
        };
        const auto [second, third, fourth] = FourPlaces::of(size, 4);
        const std::int32_t words[] = {load(0), load(second), load(third), load(fourth)};
        store(0, words[0]);
        store(second, words[1]);
        store(third, words[2]);
        store(fourth, words[3]);
        notPlain = notPlainAscii(_mm_setr_epi32(words[0], words[1], words[2], words[3]));
    } else if (size != 0) {
        const auto at = [text](std::size_t place) {
            return std::uint32_t{static_cast<unsigned char>(text[place])};
        };
        const std::uint32_t three = at(0) | at(size / 2) << 8 | at(size - 1) << 16;
        notPlain = notPlainAscii(_mm_set1_epi32(static_cast<int>(three | ' ' << 24)));
        out[0] = text[0];
        out[size / 2] = text[size / 2];
        out[size - 1] = text[size - 1];
    } else {
        return out;
    }
    return _mm_movemask_epi8(notPlain) == 0 ? out + size : nullptr;
}

} // namespace tarn::text
