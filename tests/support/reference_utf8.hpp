// UTF-16 to UTF-8 one code point at a time, to compare the fast converters with.
#pragma once

#include <text/utf16.hpp>

#include <string>
#include <string_view>

namespace tarn::tests {

/// Converts @p text; a surrogate without a partner becomes U+FFFD.
inline std::string referenceUtf8(std::u16string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t codePoint = text[i];
        if (text::isSurrogate(text[i])) {
            const bool paired = text::isHighSurrogate(text[i]) && i + 1 < text.size() &&
                                text::isLowSurrogate(text[i + 1]);
            codePoint =
                paired ? 0x10000 + (codePoint - 0xD800) * 0x400 + (text[++i] - 0xDC00) : 0xFFFD;
        }
        const int continuations = codePoint < 0x80      ? 0
                                  : codePoint < 0x800   ? 1
                                  : codePoint < 0x10000 ? 2
                                                        : 3;
        static constexpr char32_t LEAD[] = {0x00, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(LEAD[continuations] | codePoint >> 6 * continuations);
        for (int left = continuations; left-- > 0;) {
            bytes += static_cast<char>(0x80 | (codePoint >> 6 * left & 0x3F));
        }
    }
    return bytes;
}

} // namespace tarn::tests
