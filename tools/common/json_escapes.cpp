#include "tools/common/json_escapes.hpp"

#include <charconv>
#include <cstdint>

namespace tarn::tools {

namespace {

/// The characters with an escape of two characters, and the letters that stand for them.
constexpr std::string_view CHARACTERS = "\"\\/\b\f\n\r\t";
constexpr std::string_view LETTERS = "\"\\/bfnrt";

} // namespace

std::optional<char16_t> escapedCodeUnit(std::string_view text)
{
    if (!text.starts_with(UNICODE_ESCAPE_START) || text.size() < UNICODE_ESCAPE_SIZE) {
        return std::nullopt;
    }
    const char* const digits = text.data() + UNICODE_ESCAPE_START.size();
    const char* const end = text.data() + UNICODE_ESCAPE_SIZE;
    std::uint16_t codeUnit = 0; // from_chars takes no char16_t
    const bool isWhole = std::from_chars(digits, end, codeUnit, 16).ptr == end;
    return isWhole ? std::optional<char16_t>(codeUnit) : std::nullopt;
}

std::optional<char> escapedCharacter(char letter)
{
    const std::size_t index = LETTERS.find(letter);
    return index < LETTERS.size() ? std::optional(CHARACTERS[index]) : std::nullopt;
}

std::optional<char> escapeLetter(char16_t character)
{
    const std::size_t index =
        character < 0x80 ? CHARACTERS.find(static_cast<char>(character)) : std::string_view::npos;
    return index < CHARACTERS.size() ? std::optional(LETTERS[index]) : std::nullopt;
}

} // namespace tarn::tools
