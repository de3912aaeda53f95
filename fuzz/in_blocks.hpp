// The blocks in which a program reads an input.
#pragma once

#include "tests/tools/common/inputs.hpp"

namespace tarn::fuzz {

using tools::test::inBlocks;

/// The most bytes that an input can have, and the most blocks.
constexpr std::size_t LONGEST = 16'384;
constexpr std::size_t MOST_BLOCKS = 128;

/// The smallest size of the blocks of @p bytes.
inline std::size_t smallBlockSize(std::string_view bytes)
{
    return bytes.size() / MOST_BLOCKS + 1;
}

} // namespace tarn::fuzz
