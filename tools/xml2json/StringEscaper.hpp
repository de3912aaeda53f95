// StringEscaper: makes the content of JSON strings from text.
#pragma once

#include "tools/xml2json/JsonWriter.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace xml2json {

/// Writes a string value or a key piece by piece, and escapes what XPath and XQuery Functions and
/// Operators 3.1 lists: `"`, `\`, `/` and the control characters, also those from U+007F to U+009F.
class StringEscaper
{
public:
    explicit StringEscaper(JsonWriter& writer) : writer(writer) {}

    /// Starts a string.
    ///
    /// @param isEscaped the text contains JSON escape sequences, which are kept as they are.
    void start(bool isEscaped);

    /// Writes a piece of the string, in which every character is whole. Returns false at an escape
    /// sequence that JSON does not have.
    bool add(std::string_view piece);

    /// Ends the string. Returns false inside an escape sequence.
    bool end();

private:
    bool continueEscape(char byte);
    void writeEscaped(unsigned char character);

    JsonWriter& writer;
    bool isEscaped = false;

    /// The escape sequence that has begun, as far as it has come.
    std::string escape;
};

/// What @p text stands for if it contains JSON escape sequences; nothing if one of them is invalid.
/// It is in UTF-8, except that surrogates without a partner are encoded like characters.
std::optional<std::string> unescape(std::string_view text);

} // namespace xml2json
