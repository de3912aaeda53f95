// Position: a place in an input, as messages name it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::tools {

/// A line and a column; both count from 1, and columns count characters.
struct Position
{
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

/// The position behind @p text, which is in UTF-8 and begins at @p position.
Position advance(Position position, std::string_view text);

/// Throws an error whose text is `NAME:LINE:COLUMN: problem`.
[[noreturn]] void failAt(const std::string& name, Position position, const std::string& problem);

} // namespace tarn::tools
