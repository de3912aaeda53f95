// Pieces of markup.
#pragma once

#include "tarn/document/Bytes.hpp"

#include <cstddef>
#include <string_view>

namespace tarn::document::detail {

inline constexpr std::size_t INDENTATION = 2; ///< In spaces for each element around.

inline char* putName(char* out, std::string_view prefix, std::string_view localName)
{
    if (!prefix.empty()) {
        out = put(out, prefix);
        *out++ = ':';
    }
    return put(out, localName);
}

/// The most bytes that putLine() writes at @p depth.
constexpr std::size_t lineBound(std::size_t depth)
{
    return 1 + INDENTATION * depth;
}

/// Begins a line.
inline char* putLine(char* out, std::size_t depth)
{
    *out++ = '\n';
    for (; depth >= 4; depth -= 4) {
        out = put(out, "        ");
    }
    for (; depth > 0; --depth) {
        out = put(out, "  ");
    }
    return out;
}

} // namespace tarn::document::detail
