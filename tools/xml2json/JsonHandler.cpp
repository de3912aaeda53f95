#include "tools/xml2json/JsonHandler.hpp"

#include "tools/xml2json/numbers.hpp"

#include <algorithm>
#include <cstring>

namespace xml2json {

namespace {

constexpr char NAMESPACE[] = "http://www.w3.org/2005/xpath-functions";

/// Compares a constant number of bytes, for which the compiler needs no call.
template <std::size_t SIZE>
bool is(std::string_view text, const char (&literal)[SIZE])
{
    return text.size() == SIZE - 1 && std::memcmp(text.data(), literal, SIZE - 1) == 0;
}

std::string quoted(std::string_view text)
{
    return '\'' + std::string(text) + '\'';
}

} // namespace

JsonHandler::JsonHandler(const XmlParser& parser, std::ostream& output, const Limits& limits,
                         const Format& format)
    : parser(parser), limits(limits), format(format), writer(output, format.indentation),
      escaper(writer)
{
}

void JsonHandler::startElement(const Name& name, std::span<const Attribute> attributes)
{
    if (leaf) {
        refuse("an element inside a value that can only be text");
    }
    const Element element = elementOf(name);
    const Properties properties = propertiesOf(name.local, attributes, element == Element::STRING);
    if (containers.empty()) {
        // The outermost element can be a member that was taken out of a map, so a key is ignored.
        if (format.hasLines && element != Element::ARRAY) {
            refuse("expected array, whose members become lines, found " + std::string(name.local));
        }
    } else if (containers.back() == Element::MAP) {
        writeKey(name.local, properties);
    } else if (properties.key || properties.hasEscapedKey) {
        refuse("a key in an array, at " + std::string(name.local));
    }
    if (element == Element::ARRAY || element == Element::MAP) {
        startContainer(element);
    } else {
        startLeaf(element, properties);
    }
}

void JsonHandler::text(std::string_view piece)
{
    if (leaf) {
        leafText(piece);
    } else if (const auto* const start = std::ranges::find_if_not(piece, isWhiteSpace);
               start != piece.end()) {
        refuseText(piece.substr(0, static_cast<std::size_t>(start - piece.begin())));
    }
}

void JsonHandler::endElement()
{
    if (leaf) {
        endLeaf();
    } else {
        endContainer();
    }
    if (isOutermostArrayOfLines()) {
        writer.endLine();
    }
}

void JsonHandler::finish()
{
    if (!format.hasLines) {
        writer.endLine();
    }
    writer.push();
}

JsonHandler::Element JsonHandler::elementOf(const Name& name) const
{
    if (!is(name.space, NAMESPACE)) {
        refuse(quoted(name.local) + " is not in the namespace " + NAMESPACE);
    }
    if (is(name.local, "string")) {
        return Element::STRING;
    }
    if (is(name.local, "number")) {
        return Element::NUMBER;
    }
    if (is(name.local, "map")) {
        return Element::MAP;
    }
    if (is(name.local, "array")) {
        return Element::ARRAY;
    }
    if (is(name.local, "boolean")) {
        return Element::BOOLEAN;
    }
    if (is(name.local, "null")) {
        return Element::NULL_VALUE;
    }
    refuse("expected array, boolean, map, null, number or string, found " + quoted(name.local));
}

/// @param canBeEscaped whether the element may have the attribute `escaped`.
JsonHandler::Properties JsonHandler::propertiesOf(std::string_view element,
                                                  std::span<const Attribute> attributes,
                                                  bool canBeEscaped) const
{
    Properties properties;
    for (const Attribute& attribute : attributes) {
        const auto& [space, local] = attribute.name;
        if (space.empty() && is(local, "key")) {
            properties.key = attribute.value;
        } else if (space.empty() && is(local, "escaped-key")) {
            properties.hasEscapedKey = !containers.empty() && toBoolean(attribute);
        } else if (space.empty() && is(local, "escaped") && canBeEscaped) {
            properties.isEscaped = toBoolean(attribute);
        } else if (space.empty() || is(space, NAMESPACE)) {
            refuse(std::string(element) + " cannot have the attribute " + quoted(local));
        }
    }
    return properties;
}

bool JsonHandler::toBoolean(const Attribute& attribute) const
{
    const std::optional<bool> isTrue = parseBoolean(trim(attribute.value));
    if (!isTrue) {
        refuse("the attribute " + quoted(attribute.name.local) + " is not true, false, 1 or 0");
    }
    return *isTrue;
}

void JsonHandler::writeKey(std::string_view element, const Properties& properties)
{
    if (!properties.key) {
        refuse(std::string(element) + " in a map has no key");
    }
    const std::string_view key = *properties.key;
    const bool isEscaped = properties.hasEscapedKey.value_or(false);
    const std::optional<std::string> unescaped = isEscaped ? unescape(key) : std::nullopt;
    if (isEscaped && !unescaped) {
        refuse("a key with an unknown escape sequence");
    }
    if (!format.keepsRepeatedKeys && !keys[openMaps - 1].insert(unescaped ? *unescaped : key)) {
        refuse("the key is repeated in its map (see --keep-repeated-keys)");
    }
    escaper.start(isEscaped);
    escaper.add(key);
    escaper.end();
}

void JsonHandler::startContainer(Element element)
{
    const bool isLines = format.hasLines && containers.empty();
    if (!isLines) {
        // The outermost array of lines is not written, so it is no level.
        if (const std::size_t depth = containers.size() - (format.hasLines ? 1 : 0);
            depth == limits.depth) {
            refuse("nested deeper than " + std::to_string(limits.depth) +
                   " levels (see --max-depth)");
        }
        if (element == Element::MAP) {
            writer.startObject();
            startKeys();
        } else {
            writer.startArray();
        }
    }
    containers.push_back(element);
}

void JsonHandler::startKeys()
{
    if (openMaps == keys.size()) {
        keys.emplace_back();
    }
    keys[openMaps].clear();
    ++openMaps;
}

void JsonHandler::endContainer()
{
    const Element element = containers.back();
    containers.pop_back();
    if (element == Element::MAP) {
        --openMaps;
        writer.endObject();
    } else if (const bool isLines = format.hasLines && containers.empty(); !isLines) {
        writer.endArray();
    }
}

void JsonHandler::startLeaf(Element element, const Properties& properties)
{
    leaf = element;
    leafStart = parser.position();
    value.clear();
    hasValueEnded = false;
    if (element == Element::STRING) {
        escaper.start(properties.isEscaped);
    }
}

void JsonHandler::endLeaf()
{
    switch (*leaf) {
    case Element::STRING:
        if (!escaper.end()) {
            refuseLeaf("a string that ends inside an escape sequence");
        }
        break;
    case Element::NUMBER:
        if (!makeJsonNumber(value)) {
            refuseLeaf("the content of number is not a finite number");
        }
        writer.number(value);
        break;
    case Element::BOOLEAN:
        if (const std::optional<bool> isTrue = parseBoolean(value)) {
            writer.boolean(*isTrue);
        } else {
            refuseLeaf("the content of boolean is not true, false, 1 or 0");
        }
        break;
    default:
        writer.null();
    }
    leaf.reset();
}

void JsonHandler::leafText(std::string_view piece)
{
    constexpr std::size_t LONGEST_BOOLEAN = 5;
    switch (*leaf) {
    case Element::STRING:
        if (!escaper.add(piece)) {
            refuseLeaf("a string with an unknown escape sequence");
        }
        break;
    case Element::NUMBER:
        addToValue(piece, limits.numberSize);
        break;
    case Element::BOOLEAN:
        addToValue(piece, LONGEST_BOOLEAN);
        break;
    default:
        if (!piece.empty()) { // an empty CDATA section is no text
            refuse("text in null, which must be empty");
        }
    }
}

/// Removes the white space around the value, however it is divided into pieces.
///
/// @param limit the size that the value may have.
void JsonHandler::addToValue(std::string_view piece, std::size_t limit)
{
    const std::string_view trimmed = trim(piece);
    if (trimmed.empty()) {
        if (!piece.empty()) {
            hasValueEnded = !value.empty();
        }
        return;
    }
    const bool isDivided = hasValueEnded || (!value.empty() && isWhiteSpace(piece.front()));
    if (isDivided) {
        refuseLeaf("white space inside a value");
    }
    if (value.size() + trimmed.size() > limit) {
        refuseLeaf("a value longer than " + std::to_string(limit) + " bytes");
    }
    value += trimmed;
    hasValueEnded = isWhiteSpace(piece.back());
}

void JsonHandler::refuse(const std::string& problem) const
{
    parser.fail(parser.position(), problem);
}

void JsonHandler::refuseText(std::string_view whiteSpaceBefore) const
{
    parser.fail(tarn::tools::advance(parser.position(), whiteSpaceBefore),
                "text outside of strings, numbers and booleans");
}

void JsonHandler::refuseLeaf(const std::string& problem) const
{
    parser.fail(leafStart, problem);
}

} // namespace xml2json
