#include "text/utf8_encoder.hpp"

#include "text/utf16.hpp"

#include <algorithm>

namespace tarn::text {

namespace {

Utf8Encoder bestEncoder()
{
    const auto levels = utf8EncoderLevels();
    return std::ranges::find_if(
               levels, [](Utf8Encoder encode) { return encode != nullptr; },
               &Utf8EncoderLevel::encode)
        ->encode;
}

constexpr char continuation(unsigned bits)
{
    return static_cast<char>(0x80 | (bits & 0x3F));
}

} // namespace

EncodedUtf8 encodeUtf8(const char16_t* first, const char16_t* last, char* out)
{
    static const Utf8Encoder best = bestEncoder();
    return best(first, last, out);
}

std::array<Utf8EncoderLevel, 4> utf8EncoderLevels()
{
    return {{{"AVX-512", utf8EncoderForAvx512()},
             {"AVX2", utf8EncoderForAvx2()},
             {"SSSE3", utf8EncoderForSsse3()},
             {"portable", encodeUtf8Portable}}};
}

EncodedUtf8 encodeUtf8Portable(const char16_t* first, const char16_t* last, char* out)
{
    for (; first != last; ++first) {
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
            ++first;
            const unsigned codePoint = 0x10000u + ((unit & 0x3FFu) << 10) + (*first & 0x3FFu);
            *out++ = static_cast<char>(0xF0 | (codePoint >> 18));
            *out++ = continuation(codePoint >> 12);
            *out++ = continuation(codePoint >> 6);
            *out++ = continuation(codePoint);
        } else {
            break;
        }
    }
    return {first, out};
}

} // namespace tarn::text
