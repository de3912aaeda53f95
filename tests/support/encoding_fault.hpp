// The UTF-8 encoders on one text.
#pragma once

#include "support/difference.hpp"
#include "support/reference_utf8.hpp"

#include <text/utf16.hpp>
#include <text/utf8_encoder.hpp>

#include <string>
#include <string_view>

namespace tarn::tests {

namespace detail {

/// Encodes @p text with the encoder of @p level, up to the first surrogate without a partner, from
/// there to the next, and so on.
inline std::string faultOfEncoding(std::u16string_view text, const text::Utf8EncoderLevel& level)
{
    std::string written;
    for (std::u16string_view left = text; !left.empty();) {
        // One byte more than the bound, to see that it stays untouched.
        constexpr char UNTOUCHED = '\x55';
        std::string bytes(text::encodedUtf8Bound(left.size()) + 1, UNTOUCHED);
        const auto encoded = level.encode(left.data(), left.data() + left.size(), bytes.data());
        if (bytes.back() != UNTOUCHED) {
            return "more bytes are written than the bound of " + shown(left);
        }
        written.append(bytes.data(), encoded.written);
        left.remove_prefix(static_cast<std::size_t>(encoded.read - left.data()));
        if (!left.empty()) {
            if (!text::isSurrogate(left.front())) {
                return "the encoder stops too early, before " + shown(left);
            }
            written += "\uFFFD";
            left.remove_prefix(1);
        }
    }
    return difference(written, referenceUtf8(text));
}

} // namespace detail

/// Encodes @p text where it lies, with the encoder of each level that this processor can run.
/// @returns the level and what it does wrong; nothing if all is right.
inline std::string faultOfEncoding(std::u16string_view text)
{
    for (const text::Utf8EncoderLevel& level : text::utf8EncoderLevels()) {
        const std::string fault =
            level.encode != nullptr ? detail::faultOfEncoding(text, level) : "";
        if (!fault.empty()) {
            return std::string(level.name) + ": " + fault;
        }
    }
    return "";
}

} // namespace tarn::tests
