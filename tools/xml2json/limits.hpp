// How large the parts of the XML may be.
#pragma once

#include <cstddef>

namespace xml2json {

/// Everything else may be of any size. A program uses the values that stand here, except that
/// `--max-depth` sets the depth.
struct Limits
{
    /// The number of arrays and objects inside one another: `[]` is one, `1` is none.
    std::size_t depth = 1000;

    /// The size of a number in bytes, without the white space around it. Its text is kept whole.
    std::size_t numberSize = std::size_t{1} << 30;
};

} // namespace xml2json
