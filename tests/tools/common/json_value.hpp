// The value of a JSON text, in a form that is the same for all texts with that value.
#pragma once

#include "support/decoding_fault.hpp"

#include <cstdio>
#include <string>
#include <string_view>

namespace tarn::tools::test {

namespace detail {

inline void appendUnit(std::string& value, unsigned unit)
{
    char escape[16];
    std::snprintf(escape, sizeof escape, "\\u%04x", unit);
    value += escape;
}

/// Takes the characters up to a quotation mark or a backslash from @p text.
inline void appendCharacters(std::string& value, std::string_view& text)
{
    const std::string_view characters = text.substr(0, text.find_first_of("\"\\"));
    for (const char16_t unit : tests::detail::referenceUtf16(characters).units) {
        appendUnit(value, unit);
    }
    text.remove_prefix(characters.size());
}

inline void appendEscape(std::string& value, std::string_view& text)
{
    constexpr std::string_view LETTERS = "\"\\/bfnrt";
    if (text[1] == 'u') {
        appendUnit(value,
                   static_cast<unsigned>(std::stoul(std::string(text.substr(2, 4)), nullptr, 16)));
        text.remove_prefix(6);
    } else {
        appendUnit(value, static_cast<unsigned char>("\"\\/\b\f\n\r\t"[LETTERS.find(text[1])]));
        text.remove_prefix(2);
    }
}

} // namespace detail

/// @p json without layout and with each code unit of a string as a Unicode escape. Numbers, and the
/// order of members, stay as they are.
///
/// @param json one value, or values with a line feed after each of them, which stays too.
inline std::string valueOfJson(std::string_view json, bool hasLines = false)
{
    std::string value;
    bool isInString = false;
    while (!json.empty()) {
        if (json.front() == '"') {
            isInString = !isInString;
        } else if (isInString) {
            if (json.front() == '\\') {
                detail::appendEscape(value, json);
            } else {
                detail::appendCharacters(value, json);
            }
            continue;
        }
        if ((hasLines && json.front() == '\n') ||
            std::string_view(" \t\n\r").find(json.front()) == std::string_view::npos) {
            value += json.front();
        }
        json.remove_prefix(1);
    }
    return value;
}

} // namespace tarn::tools::test
