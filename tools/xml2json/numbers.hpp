// Numbers and booleans of XML Schema, as JSON.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace xml2json {

/// White space of XML.
constexpr std::string_view WHITE_SPACE = " \t\n\r";

/// @p text without white space at both ends.
std::string_view trim(std::string_view text);

/// The value of an xs:boolean; nothing if @p text is none. White space around it has been removed.
std::optional<bool> parseBoolean(std::string_view text);

/// An xs:double as a JSON number; nothing if @p text is none, or not finite. White space around it
/// has been removed.
///
/// A JSON number stays as it is, so no digit is lost. Any other one becomes the text that XPath
/// gives its value when it is cast to xs:string.
std::optional<std::string> toJsonNumber(const std::string& text);

} // namespace xml2json
