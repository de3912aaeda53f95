#include "corda/i18n/utf8_encoder.hpp"

#include "corda/i18n/utf16.hpp"

#include <initializer_list>

namespace corda::i18n::detail {

namespace {

Utf8Encoder bestEncoder()
{
    for (const Utf8Encoder encoder : {utf8_encoder_for_avx512(), utf8_encoder_for_ssse3()}) {
        if (encoder != nullptr) {
            return encoder;
        }
    }
    return encode_utf8_portable;
}

constexpr char continuation(unsigned bits)
{
    return static_cast<char>(0x80 | (bits & 0x3F));
}

} // namespace

EncodedUtf8 encode_utf8(const char16_t* first, const char16_t* last, char* out)
{
    static const Utf8Encoder best = bestEncoder();
    return best(first, last, out);
}

EncodedUtf8 encode_utf8_portable(const char16_t* first, const char16_t* last, char* out)
{
    for (; first != last; ++first) {
        const char16_t unit = *first;
        if (unit < 0x80) {
            *out++ = static_cast<char>(unit);
        } else if (unit < 0x800) {
            *out++ = static_cast<char>(0xC0 | (unit >> 6));
            *out++ = continuation(unit);
        } else if (!is_surrogate(unit)) {
            *out++ = static_cast<char>(0xE0 | (unit >> 12));
            *out++ = continuation(unit >> 6);
            *out++ = continuation(unit);
        } else if (is_high_surrogate(unit) && last - first > 1 && is_low_surrogate(first[1])) {
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

} // namespace corda::i18n::detail
