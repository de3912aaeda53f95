// The kernels that encode UTF-8, on one text.
#pragma once

#include "support/Difference.hpp"
#include "support/ReferenceUtf8.hpp"

#include <corda/i18n/utf8_encoder.hpp>

#include <string>
#include <string_view>

namespace tarn::tests {

/// Encodes @p text where it lies, up to the first surrogate without a partner, from there to the
/// next, and so on, with each encoder that this processor can run.
/// @returns what one of them does wrong; nothing if all is as it should be.
inline std::string faultOfEncoding(std::u16string_view text)
{
    using namespace corda::i18n::detail;

    const std::string expected = referenceUtf8(text);
    for (const Utf8Encoder encode :
         {encode_utf8, encode_utf8_portable, utf8_encoder_for_ssse3(), utf8_encoder_for_avx512()}) {
        std::string written;
        for (std::u16string_view left = text; encode != nullptr && !left.empty();) {
            // One byte more than the bound, to see that it stays untouched.
            std::string bytes(encoded_utf8_bound(left.size()) + 1, '\x55');
            const auto encoded = encode(left.data(), left.data() + left.size(), bytes.data());
            if (bytes.back() != '\x55') {
                return "the bytes are more than promised of " + shown(left);
            }
            written.append(bytes.data(), encoded.written);
            left.remove_prefix(static_cast<std::size_t>(encoded.read - left.data()));
            if (!left.empty()) {
                if ((left.front() & 0xF800) != 0xD800) {
                    return "an encoder stops too early before " + shown(left);
                }
                written += "\uFFFD";
                left.remove_prefix(1);
            }
        }
        if (encode != nullptr && written != expected) {
            return difference(written, expected);
        }
    }
    return "";
}

} // namespace tarn::tests
