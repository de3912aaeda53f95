// The kernels that encode UTF-8, on one text.
#pragma once

#include "support/Difference.hpp"
#include "support/ReferenceUtf8.hpp"

#include <corda/i18n/utf8_encoder.hpp>

#include <algorithm>
#include <string>
#include <string_view>

namespace tarn::tests {

/// The length of the longest beginning without an unpaired surrogate.
inline std::size_t wellFormedLength(std::u16string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto isIn = [&](std::size_t index, char16_t first, char16_t last) {
            return index < text.size() && text[index] >= first && text[index] <= last;
        };
        if (isIn(i, 0xD800, 0xDBFF) && isIn(i + 1, 0xDC00, 0xDFFF)) {
            ++i;
        } else if (isIn(i, 0xD800, 0xDFFF)) {
            return i;
        }
    }
    return text.size();
}

/// Encodes @p text where it lies, up to the first surrogate without a partner, from there to the
/// next, and so on.
/// @returns what the encoder does wrong; nothing if all is as it should be.
inline std::string faultOfEncoding(std::u16string_view text,
                                   corda::i18n::detail::Utf8Encoder encode)
{
    while (!text.empty()) {
        // One byte more than the bound, to see that it stays untouched.
        std::string bytes(corda::i18n::detail::encoded_utf8_bound(text.size()) + 1, '\x55');
        const auto encoded = encode(text.data(), text.data() + text.size(), bytes.data());
        const std::size_t wellFormed = wellFormedLength(text);
        const auto read = static_cast<std::size_t>(encoded.read - text.data());
        if (read != wellFormed || bytes.back() != '\x55') {
            return std::to_string(read) + " units are read of " + shown(text);
        }
        const std::string_view written(bytes.data(), encoded.written);
        const std::string expected = referenceUtf8(text.substr(0, wellFormed));
        if (written != expected) {
            return difference(written, expected);
        }
        text.remove_prefix(std::min(wellFormed + 1, text.size()));
    }
    return "";
}

} // namespace tarn::tests
