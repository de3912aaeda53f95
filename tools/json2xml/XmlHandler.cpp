#include "tools/json2xml/XmlHandler.hpp"

#include <algorithm>
#include <limits>

namespace json2xml {

static_assert(Limits().stringSize < std::numeric_limits<rapidjson::SizeType>::max());

namespace {

const std::u16string NAMESPACE = u"http://www.w3.org/2005/xpath-functions";
const std::u16string NO_NAMESPACE;
const std::u16string NO_PREFIX;

const std::u16string ARRAY = u"array";
const std::u16string BOOLEAN = u"boolean";
const std::u16string MAP = u"map";
const std::u16string NULL_VALUE = u"null";
const std::u16string NUMBER = u"number";
const std::u16string STRING = u"string";
const std::u16string KEY = u"key";

const std::u16string TRUE = u"true";
const std::u16string FALSE = u"false";
const std::u16string LINE_FEED = u"\n";

const std::u16string TAB_REFERENCE = u"&#9;";
const std::u16string LINE_FEED_REFERENCE = u"&#10;";
const std::u16string CARRIAGE_RETURN_REFERENCE = u"&#13;";

/// The white space that a parser turns into other white space.
const std::u16string NORMALISED_IN_CONTENT = u"\r";
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

XmlHandler::XmlHandler(JsonInput& input, std::ostream& output) : input(input), writer(output)
{
    writer.writeStartDocument();
    writer.registerDefaultNamespace(NAMESPACE);
}

bool XmlHandler::Null()
{
    startElement(NULL_VALUE);
    writer.writeEndElement();
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
    input.endString();
    text.assign(characters, length);
    startElement(STRING);
    writer.writeStartElementClose();
    writeText(text, NORMALISED_IN_CONTENT);
    writer.writeEndElement();
    return true;
}

bool XmlHandler::StartObject()
{
    return startContainer(MAP);
}

bool XmlHandler::Key(const char16_t* characters, rapidjson::SizeType length, bool)
{
    input.endString();
    key.assign(characters, length);
    hasKey = true;
    return true;
}

bool XmlHandler::EndObject(rapidjson::SizeType)
{
    return endContainer();
}

bool XmlHandler::StartArray()
{
    return startContainer(ARRAY);
}

bool XmlHandler::EndArray(rapidjson::SizeType)
{
    return endContainer();
}

void XmlHandler::finish()
{
    writer.writeRawXml(LINE_FEED);
    writer.writeEndDocument();
}

void XmlHandler::startElement(const std::u16string& name)
{
    writer.writeStartElement(name, NAMESPACE, NO_PREFIX);
    if (hasKey) {
        writer.writeStartAttribute(KEY, NO_NAMESPACE, NO_PREFIX);
        writeText(key, NORMALISED_IN_ATTRIBUTE);
        writer.writeEndAttribute();
        hasKey = false;
    }
}

bool XmlHandler::writeSimple(const std::u16string& name, const std::u16string& plainText)
{
    startElement(name);
    writer.writeStartElementClose();
    writer.writeValue(plainText);
    writer.writeEndElement();
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

bool XmlHandler::endContainer()
{
    --depth;
    writer.writeEndElement();
    return true;
}

void XmlHandler::writeText(std::u16string& text, const std::u16string& normalised)
{
    if (hasSpecial(text)) {
        std::ranges::replace_if(text, isNotInXml, REPLACEMENT_CHARACTER);
        writeInPieces(text, normalised);
    } else {
        writer.writeValue(text);
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

} // namespace json2xml
