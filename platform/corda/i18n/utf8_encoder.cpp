#include "corda/i18n/utf8_encoder.hpp"

#include <emmintrin.h>

namespace corda::i18n::detail {

namespace {

constexpr bool isHighSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool isLowSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

constexpr bool isSurrogate(char16_t unit)
{
    return (unit & 0xF800) == 0xD800;
}

} // namespace

EncodedUtf8 encode_utf8_portable(const char16_t* first, const char16_t* last, char* out)
{
    const auto continuation = [](unsigned bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    while (first != last) {
        const char16_t unit = *first;
        if (unit < 0x80) {
            *out++ = static_cast<char>(unit);
        } else if (unit < 0x800) {
            *out++ = static_cast<char>(0xC0 | (unit >> 6));
            *out++ = continuation(unit);
        } else if (!isSurrogate(unit)) {
            *out++ = static_cast<char>(0xE0 | (unit >> 12));
            *out++ = continuation(unit >> 6);
            *out++ = continuation(unit);
        } else if (isHighSurrogate(unit) && last - first > 1 && isLowSurrogate(first[1])) {
            const unsigned codePoint = 0x10000u + ((unit & 0x3FFu) << 10) + (first[1] & 0x3FFu);
            *out++ = static_cast<char>(0xF0 | (codePoint >> 18));
            *out++ = continuation(codePoint >> 12);
            *out++ = continuation(codePoint >> 6);
            *out++ = continuation(codePoint);
            ++first;
        } else {
            break;
        }
        ++first;
    }
    return {first, out};
}

EncodedUtf8 encode_utf8(const char16_t* first, const char16_t* last, char* out)
{
    constexpr std::ptrdiff_t BLOCK = 16;
    const __m128i beyondAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    while (last - first >= BLOCK) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first + BLOCK / 2));
        const __m128i excess = _mm_and_si128(_mm_or_si128(low, high), beyondAscii);
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(excess, _mm_setzero_si128())) == 0xFFFF) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
            first += BLOCK;
            out += BLOCK;
            continue;
        }
        const char16_t* blockEnd = first + BLOCK;
        if (isHighSurrogate(blockEnd[-1])) {
            --blockEnd;
        }
        const EncodedUtf8 block = encode_utf8_portable(first, blockEnd, out);
        first = block.read;
        out = block.written;
        if (first != blockEnd) {
            return block;
        }
    }
    return encode_utf8_portable(first, last, out);
}

} // namespace corda::i18n::detail
