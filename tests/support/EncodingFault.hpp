// The kernels that encode UTF-8, on one text.
#pragma once

#include "support/Difference.hpp"
#include "support/ReferenceUtf8.hpp"

#include <corda/i18n/utf8_encoder.hpp>

#include <string>
#include <string_view>

namespace tarn::tests {

/// Encodes @p text where it lies, up to the first surrogate without a partner, from there to the
/// next, and so on.
/// @returns what the encoder does wrong; nothing if all is as it should be.
inline std::string faultOfEncoding(std::u16string_view text,
                                   corda::i18n::detail::Utf8Encoder encode)
{
    const std::string expected = referenceUtf8(text);
    std::string written;
    while (!text.empty()) {
        // One byte more than the bound, to see that it stays untouched.
        std::string bytes(corda::i18n::detail::encoded_utf8_bound(text.size()) + 1, '\x55');
        const auto encoded = encode(text.data(), text.data() + text.size(), bytes.data());
        if (bytes.back() != '\x55') {
            return "the bytes are more than promised of " + shown(text);
        }
        written.append(bytes.data(), encoded.written);
        text.remove_prefix(static_cast<std::size_t>(encoded.read - text.data()));
        if (!text.empty()) {
            if ((text.front() & 0xF800) != 0xD800) {
                return "the encoder stops too early before " + shown(text);
            }
            written += "\uFFFD";
            text.remove_prefix(1);
        }
    }
    return difference(written, expected);
}

} // namespace tarn::tests
