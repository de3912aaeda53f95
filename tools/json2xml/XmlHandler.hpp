// XmlHandler: writes the events of RapidJSON's reader as the XML representation of JSON from XPath
// and XQuery Functions and Operators 3.1.
#pragma once

#include "tools/json2xml/ElementWriter.hpp"
#include "tools/json2xml/JsonInput.hpp"

#include <cstddef>
#include <iosfwd>
#include <rapidjson/encodings.h>
#include <rapidjson/reader.h>
#include <string>

namespace json2xml {

/// What the XML looks like.
struct Format
{
    /// Characters that are special for the recommendation's option `escape` become JSON escape
    /// sequences, among them all that XML 1.0 does not allow. The input must keep special units.
    /// Otherwise those that XML 1.0 does not allow become U+FFFD.
    bool hasEscapes = false;

    /// Everything stands on one line.
    bool isCompact = false;

    /// The input is any number of values, which become the members of an array.
    bool hasLines = false;
};

/// Strings come as UTF-16. A number comes as its first digit; the input keeps its text.
class XmlHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF16<char16_t>, XmlHandler>
{
public:
    /// Writes the XML declaration.
    ///
    /// @param input the input that the reader reads. It knows the texts of numbers, the position
    ///        that a message names, and the limits.
    XmlHandler(JsonInput& input, std::ostream& output, const Format& format);

    bool Null();
    bool Bool(bool isTrue);
    bool Int(int firstDigit);
    bool Uint(unsigned firstDigit);
    bool String(const char16_t* characters, rapidjson::SizeType length, bool isTemporary);
    bool StartObject();
    bool Key(const char16_t* characters, rapidjson::SizeType length, bool isTemporary);
    bool EndObject(rapidjson::SizeType memberCount);
    bool StartArray();
    bool EndArray(rapidjson::SizeType elementCount);

    /// Starts and ends the array whose members are the values of an input of lines. It is no level
    /// of the depth.
    void startLines();
    void endLines();

    /// Ends the document with a line feed and pushes all text to the output.
    void finish();

private:
    /// How a string is written.
    enum class Form
    {
        AS_IT_IS,
        IN_PIECES, ///< With character references for white space that must not stand as it is.
        ESCAPED    ///< With JSON escape sequences.
    };

    struct StringValue
    {
        std::u16string text; ///< Without characters that XML 1.0 does not allow, unless escaped.
        Form form = Form::AS_IT_IS;
    };

    /// Writes a start tag without its end, with the key if there is one.
    void startElement(const std::u16string& name);
    void writeAttribute(const std::u16string& name, const std::u16string& plainText);
    void take(StringValue& string, const char16_t* characters, std::size_t length);
    bool writeSimple(const std::u16string& name, const std::u16string& plainText);
    bool startContainer(const std::u16string& name);
    bool endContainer(const std::u16string& name);

    /// Writes @p string as content or into the open attribute value, so that a parser reads the
    /// same text back.
    ///
    /// @param normalised the white space that a parser would change here, or that must not stand
    ///        here as it is.
    void write(const StringValue& string, const std::u16string& normalised);
    void writeInPieces(const std::u16string& text, const std::u16string& normalised);

    /// Writes @p text, which has characters to escape, as content or into the open attribute value.
    void writeEscaped(const std::u16string& text);

    JsonInput& input;
    const Format format;
    ElementWriter writer;
    /// How many arrays and objects are open.
    std::size_t depth = 0;

    /// The key of the next value, if that is an object's member.
    StringValue key;
    bool hasKey = false;

    /// A string that is no key, and a piece of one. They are members so that their memory is used
    /// again.
    StringValue value;
    std::u16string piece;
};

} // namespace json2xml
