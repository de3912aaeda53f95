#include "tools/json2xml/convert.hpp"

#include "common/ThrowingAllocator.hpp"
#include <rapidjson/error/error.h>
#include <string_view>

namespace json2xml {

namespace {

/// Iterative, since a recursive parser could run out of call stack. Without the second flag the
/// reader would trust the input to be UTF-8.
constexpr unsigned PARSE_FLAGS =
    rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;

using Reader = rapidjson::GenericReader<InputEncoding, rapidjson::UTF16<char16_t>,
                                        tarn::common::ThrowingAllocator>;

std::string describeFaultInString(const JsonInput& input, std::size_t offset)
{
    if (input.byteAt(offset) != '\\') {
        return "expected an escape sequence, found " + input.describeByte(offset);
    }
    return input.isEnd(input.Tell()) ? "the input ends inside an escape sequence"
                                     : "unknown escape sequence";
}

/// Whether the byte before @p offset belongs to `true`, `false` or `null`, or to a misspelt one.
bool isInLiteral(const JsonInput& input, std::size_t offset)
{
    return offset > 0 && input.byteAt(offset - 1) >= 'a' && input.byteAt(offset - 1) <= 'z';
}

std::string describe(rapidjson::ParseErrorCode code, const JsonInput& input, std::size_t offset)
{
    const std::string found = input.describeByte(offset);
    switch (code) {
    case rapidjson::kParseErrorDocumentEmpty:
        return "expected a value, found " + found;
    case rapidjson::kParseErrorDocumentRootNotSingular:
        return "expected the end of the input, found " + found;
    case rapidjson::kParseErrorObjectMissName:
        return "expected a key, found " + found;
    case rapidjson::kParseErrorObjectMissColon:
        return "expected ':', found " + found;
    case rapidjson::kParseErrorObjectMissCommaOrCurlyBracket:
        return "expected ',' or '}', found " + found;
    case rapidjson::kParseErrorArrayMissCommaOrSquareBracket:
        return "expected ',' or ']', found " + found;
    case rapidjson::kParseErrorStringUnicodeEscapeInvalidHex:
    case rapidjson::kParseErrorStringEscapeInvalid:
        return describeFaultInString(input, offset);
    case rapidjson::kParseErrorStringMissQuotationMark:
        return "expected the end of a string, found " + found;
    case rapidjson::kParseErrorStringInvalidEncoding:
        return "ill-formed UTF-8";
    default:
        return (isInLiteral(input, offset) ? "expected true, false or null, found "
                                           : "expected a value, found ") +
               found;
    }
}

/// Reads one value.
template <unsigned FLAGS>
void parse(Reader& reader, JsonInput& input, XmlHandler& handler)
{
    const rapidjson::ParseResult result = reader.Parse<FLAGS>(input, handler);
    if (result.IsError()) {
        input.fail(result.Offset(), describe(result.Code(), input, result.Offset()));
    }
}

void convertValue(JsonInput& input, XmlHandler& handler)
{
    Reader reader;
    parse<PARSE_FLAGS>(reader, input, handler);
    // The reader takes every NUL for the end.
    if (const std::size_t offset = input.Tell(); !input.isEnd(offset)) {
        input.fail(offset, describe(rapidjson::kParseErrorDocumentRootNotSingular, input, offset));
    }
}

/// Reads values up to the end. White space must divide what would otherwise run together, such as
/// two numbers.
void convertValues(JsonInput& input, XmlHandler& handler)
{
    Reader reader;
    handler.startLines();
    input.skipWhiteSpace();
    while (!input.isEnd(input.Tell())) {
        parse<PARSE_FLAGS | rapidjson::kParseStopWhenDoneFlag>(reader, input, handler);
        input.skipRestOfNumber();
        const std::size_t end = input.Tell();
        const bool isDelimited =
            std::string_view("]}\"").find(input.byteAt(end - 1)) != std::string_view::npos;
        input.skipWhiteSpace();
        if (!isDelimited && input.Tell() == end && !input.isEnd(end)) {
            input.fail(end,
                       "expected white space between two values, found " + input.describeByte(end));
        }
    }
    handler.endLines();
}

} // namespace

void convert(JsonInput& input, std::ostream& output, const Format& format)
{
    XmlHandler handler(input, output, format);
    if (format.hasLines) {
        convertValues(input, handler);
    } else {
        convertValue(input, handler);
    }
    handler.finish();
}

} // namespace json2xml
