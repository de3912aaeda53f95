// How large the parts of a JSON text may be.
#pragma once

#include <cstddef>

namespace json2xml {

/// Everything else may be of any size: the input, an array, an object. A program uses the values
/// that stand here, except that `--max-depth` sets the depth.
///
/// A size counts the bytes of the input, without the quotation marks of a string and with each
/// escape sequence as it is written.
struct Limits
{
    /// The number of arrays and objects inside one another: `[]` is one, `1` is none.
    std::size_t depth = 1000;

    /// The size of a string; a key is a string too. RapidJSON counts code units in 32 bits. A byte
    /// becomes one code unit at most, so this limit keeps the count at a quarter of its range.
    std::size_t stringSize = std::size_t{1} << 30;

    /// The size of a number, whose text is kept whole like that of a string.
    std::size_t numberSize = std::size_t{1} << 30;
};

} // namespace json2xml
