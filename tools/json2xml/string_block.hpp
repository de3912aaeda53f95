// Taking over the characters of a JSON string many at a time.
#pragma once

#include "text/utf8_decoder.hpp"

#include <array>
#include <cstddef>

namespace json2xml {

/// The most bytes that readStringBlock() reads.
inline constexpr std::size_t STRING_BLOCK_SIZE = 256;

/// How many bytes after its input readStringBlock() may load. It does not use them.
inline constexpr std::size_t STRING_BLOCK_OVERREAD = 16;

/// Some characters of a string, as UTF-16.
struct StringBlock
{
    /// The number of bytes that were read.
    std::size_t bytesRead = 0;
    /// The number of code units.
    std::size_t size = 0;
    /// They are all printable ASCII.
    bool isPlain = true;
    std::array<char16_t, tarn::text::decodedUtf8Bound(STRING_BLOCK_SIZE)> units;
};

/// Decodes well-formed UTF-8 from @p first on, up to a quotation mark, a backslash, a control
/// character, an ill-formed sequence, a character of which @p last cuts off a part, or the size of
/// a block.
void readStringBlock(const char* first, const char* last, StringBlock& block);

} // namespace json2xml
