#include "tools/json2xml/XmlHandler.hpp"

#include "text/utf16.hpp"
#include "tools/common/json_escapes.hpp"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

namespace json2xml {

static_assert(Limits().stringSize < std::numeric_limits<rapidjson::SizeType>::max());

namespace {

const std::u16string ARRAY = u"array";
const std::u16string BOOLEAN = u"boolean";
const std::u16string MAP = u"map";
const std::u16string NULL_VALUE = u"null";
const std::u16string NUMBER = u"number";
const std::u16string STRING = u"string";
const std::u16string KEY = u"key";
const std::u16string ESCAPED = u"escaped";
const std::u16string ESCAPED_KEY = u"escaped-key";

const std::u16string TRUE = u"true";
const std::u16string FALSE = u"false";

const std::u16string TAB_REFERENCE = u"&#9;";
const std::u16string LINE_FEED_REFERENCE = u"&#10;";
const std::u16string CARRIAGE_RETURN_REFERENCE = u"&#13;";

/// The white space that a parser turns into other white space.
const std::u16string NORMALISED_IN_CONTENT = u"\r";
/// That, and what would begin another line.
const std::u16string LINE_BREAKS = u"\n\r";
const std::u16string NORMALISED_IN_ATTRIBUTE = u"\t\n\r";

constexpr char16_t REPLACEMENT_CHARACTER = 0xFFFD;

/// Whether @p unit is a control character, U+FFFE or U+FFFF. XML 1.0 allows of these only three:
/// white space. It does not allow lone surrogates either, but the input has replaced those.
bool isSpecial(char16_t unit)
{
    return unit < 0x20 || unit > 0xFFFD;
}

bool isNotInXml(char16_t unit)
{
    return isSpecial(unit) && unit != u'\t' && unit != u'\n' && unit != u'\r';
}

/// No early exit, so that the compiler can vectorise the loop.
bool hasSpecial(const std::u16string& text)
{
    bool found = false;
    for (const char16_t unit : text) {
        found |= isSpecial(unit);
    }
    return found;
}

/// Whether @p unit is special for the recommendation's option `escape`, unless it is half of a
/// surrogate pair.
bool isEscapable(char16_t unit)
{
    return isSpecial(unit) || unit == u'\\' || (unit >= 0x7F && unit <= 0x9F) ||
           tarn::text::isSurrogate(unit);
}

/// The number of code units from the beginning of @p text that need no escape.
std::size_t plainSize(std::u16string_view text)
{
    std::size_t size = 0;
    while (size < text.size()) {
        const bool isPair = size + 1 < text.size() && tarn::text::isHighSurrogate(text[size]) &&
                            tarn::text::isLowSurrogate(text[size + 1]);
        if (isPair) {
            size += 2;
        } else if (isEscapable(text[size])) {
            break;
        } else {
            ++size;
        }
    }
    return size;
}

std::u16string escapeSequence(char16_t unit)
{
    constexpr char16_t DIGITS[] = u"0123456789ABCDEF";
    if (const std::optional<char> letter = tarn::tools::escapeLetter(unit)) {
        return {u'\\', static_cast<char16_t>(*letter)};
    }
    return {u'\\',
            u'u',
            DIGITS[unit >> 12],
            DIGITS[unit >> 8 & 0xF],
            DIGITS[unit >> 4 & 0xF],
            DIGITS[unit & 0xF]};
}

const std::u16string& reference(char16_t whiteSpace)
{
    switch (whiteSpace) {
    case u'\t':
        return TAB_REFERENCE;
    case u'\n':
        return LINE_FEED_REFERENCE;
    default:
        return CARRIAGE_RETURN_REFERENCE;
    }
}

} // namespace

XmlHandler::XmlHandler(JsonInput& input, std::ostream& output, const Format& format)
    : input(input), format(format), writer(output, format.isCompact)
{
}

bool XmlHandler::Null()
{
    startElement(NULL_VALUE);
    writer.endElement(NULL_VALUE);
    return true;
}

bool XmlHandler::Bool(bool isTrue)
{
    return writeSimple(BOOLEAN, isTrue ? TRUE : FALSE);
}

bool XmlHandler::Int(int)
{
    return writeSimple(NUMBER, input.number());
}

bool XmlHandler::Uint(unsigned)
{
    return writeSimple(NUMBER, input.number());
}

bool XmlHandler::String(const char16_t* characters, rapidjson::SizeType length, bool)
{
    take(value, characters, length);
    startElement(STRING);
    if (value.form == Form::ESCAPED) {
        writeAttribute(ESCAPED, TRUE);
    }
    writer.startText();
    write(value, format.isCompact ? LINE_BREAKS : NORMALISED_IN_CONTENT);
    writer.endElement(STRING);
    return true;
}

bool XmlHandler::StartObject()
{
    return startContainer(MAP);
}

bool XmlHandler::Key(const char16_t* characters, rapidjson::SizeType length, bool)
{
    take(key, characters, length);
    hasKey = true;
    return true;
}

bool XmlHandler::EndObject(rapidjson::SizeType)
{
    return endContainer(MAP);
}

bool XmlHandler::StartArray()
{
    return startContainer(ARRAY);
}

bool XmlHandler::EndArray(rapidjson::SizeType)
{
    return endContainer(ARRAY);
}

void XmlHandler::startLines()
{
    startElement(ARRAY);
}

void XmlHandler::endLines()
{
    writer.endElement(ARRAY);
}

void XmlHandler::finish()
{
    writer.finish();
}

void XmlHandler::startElement(const std::u16string& name)
{
    writer.startElement(name);
    if (hasKey) {
        writer.startAttribute(KEY);
        write(key, NORMALISED_IN_ATTRIBUTE);
        writer.endAttribute();
        if (key.form == Form::ESCAPED) {
            writeAttribute(ESCAPED_KEY, TRUE);
        }
        hasKey = false;
    }
}

void XmlHandler::writeAttribute(const std::u16string& name, const std::u16string& plainText)
{
    writer.startAttribute(name);
    writer.writeValue(plainText);
    writer.endAttribute();
}

/// Takes over the string that the reader has just read, with the special units that the reader must
/// not see.
void XmlHandler::take(StringValue& string, const char16_t* characters, std::size_t length)
{
    input.endString();
    std::u16string& text = string.text;
    text.assign(characters, length);
    string.form = Form::AS_IT_IS;
    if (input.isPlainString(length)) {
        return;
    }
    if (format.hasEscapes) {
        for (std::size_t place = 0; (place = text.find(u'\0', place)) < text.size(); ++place) {
            text[place] = input.takeSpecialUnit();
        }
        if (plainSize(text) < text.size()) {
            string.form = Form::ESCAPED;
        }
    } else if (hasSpecial(text)) {
        std::ranges::replace_if(text, isNotInXml, REPLACEMENT_CHARACTER);
        string.form = Form::IN_PIECES;
    }
}

bool XmlHandler::writeSimple(const std::u16string& name, const std::u16string& plainText)
{
    startElement(name);
    writer.startText();
    writer.writeValue(plainText);
    writer.endElement(name);
    return true;
}

bool XmlHandler::startContainer(const std::u16string& name)
{
    if (const std::size_t limit = input.limits().depth; depth == limit) {
        input.fail(input.Tell(),
                   "nested deeper than " + std::to_string(limit) + " levels (see --max-depth)");
    }
    ++depth;
    startElement(name);
    return true;
}

bool XmlHandler::endContainer(const std::u16string& name)
{
    --depth;
    writer.endElement(name);
    return true;
}

void XmlHandler::write(const StringValue& string, const std::u16string& normalised)
{
    switch (string.form) {
    case Form::AS_IT_IS:
        writer.writeValue(string.text);
        break;
    case Form::IN_PIECES:
        writeInPieces(string.text, normalised);
        break;
    case Form::ESCAPED:
        writeEscaped(string.text);
        break;
    }
}

/// Writes character references between the runs of text that a parser gives back unchanged.
void XmlHandler::writeInPieces(const std::u16string& text, const std::u16string& normalised)
{
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find_first_of(normalised, start), text.size());
        piece.assign(text, start, end - start);
        writer.writeValue(piece);
        if (end < text.size()) {
            writer.writeRawXml(reference(text[end]));
        }
        start = end + 1;
    }
}

void XmlHandler::writeEscaped(const std::u16string& text)
{
    std::u16string_view rest = text;
    while (!rest.empty()) {
        piece = rest.substr(0, plainSize(rest));
        writer.writeValue(piece);
        rest.remove_prefix(piece.size());
        if (!rest.empty()) {
            writer.writeValue(escapeSequence(rest.front()));
            rest.remove_prefix(1);
        }
    }
}

} // namespace json2xml
