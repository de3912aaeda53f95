// The kernels that encode UTF-8, on one text.
#pragma once

#include "support/difference.hpp"
#include "support/reference_utf8.hpp"

#include <text/utf8_encoder.hpp>

#include <string>
#include <string_view>

namespace tarn::tests {

/// Encodes @p text where it lies, up to the first surrogate without a partner, from there to the
/// next, and so on, with each encoder that this processor can run.
/// @returns what one of them does wrong; nothing if all is as it should be.
inline std::string faultOfEncoding(std::u16string_view text)
{
    using namespace tarn::text;

    const std::string expected = referenceUtf8(text);
    for (const Utf8Encoder encode :
         {encodeUtf8, encodeUtf8Portable, utf8EncoderForSsse3(), utf8EncoderForAvx512()}) {
        std::string written;
        for (std::u16string_view left = text; encode != nullptr && !left.empty();) {
            // One byte more than the bound, to see that it stays untouched.
            std::string bytes(encodedUtf8Bound(left.size()) + 1, '\x55');
            const auto encoded = encode(left.data(), left.data() + left.size(), bytes.data());
            if (bytes.back() != '\x55') {
                return "the bytes are more than promised of " + shown(left);
            }
            written.append(bytes.data(), encoded.written);
            left.remove_prefix(static_cast<std::size_t>(encoded.read - left.data()));
            if (!left.empty()) {
                if (!text::isSurrogate(left.front())) {
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
