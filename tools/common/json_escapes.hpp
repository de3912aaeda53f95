// The escape sequences of JSON strings.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tarn::tools {

/// A Unicode escape: these, then four hexadecimal digits.
constexpr std::string_view UNICODE_ESCAPE_START = "\\u";
constexpr std::size_t UNICODE_ESCAPE_SIZE = 6;

/// A backslash and a letter.
constexpr std::size_t SHORT_ESCAPE_SIZE = 2;

/// The code unit that the Unicode escape at the beginning of @p text stands for; nothing if none
/// begins there.
std::optional<char16_t> escapedCodeUnit(std::string_view text);

/// The character that a backslash and @p letter stand for; nothing if they stand for none.
std::optional<char> escapedCharacter(char letter);

/// The letter for @p character, to be written after a backslash; nothing if it has none.
std::optional<char> escapeLetter(char16_t character);

} // namespace tarn::tools
