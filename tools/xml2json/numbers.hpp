// Numbers and booleans of XML Schema, as JSON.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace xml2json {

/// Whether @p byte is white space of XML.
constexpr bool isWhiteSpace(char byte)
{
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

/// @p text without white space at both ends.
std::string_view trim(std::string_view text);

/// The value of an xs:boolean; nothing if @p text is none. White space around it has been removed.
std::optional<bool> parseBoolean(std::string_view text);

/// Turns @p text, an xs:double, into a JSON number. Returns false if it is none, or not finite.
/// White space around it has been removed.
///
/// A JSON number stays as it is, so no digit is lost. Any other one becomes the text that XPath
/// gives its value when it is cast to xs:string.
bool makeJsonNumber(std::string& text);

} // namespace xml2json
