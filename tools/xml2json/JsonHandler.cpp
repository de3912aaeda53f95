#include "tools/xml2json/JsonHandler.hpp"

#include "tools/xml2json/numbers.hpp"

#include <algorithm>
#include <utility>

namespace xml2json {

namespace {

constexpr std::string_view NAMESPACE = "http://www.w3.org/2005/xpath-functions";

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
    const std::string elementName(name.local);
    const Properties properties = propertiesOf(elementName, attributes, element == Element::STRING);
    if (containers.empty()) {
        // The outermost element can be a member that was taken out of a map, so a key is ignored.
        if (format.hasLines && element != Element::ARRAY) {
            refuse("expected array, whose members become lines, found " + elementName);
        }
    } else if (containers.back().isMap) {
        writeKey(elementName, properties);
    } else if (properties.key || properties.hasEscapedKey) {
        refuse("a key in an array, at " + elementName);
    }
    if (element == Element::ARRAY || element == Element::MAP) {
        startContainer(element == Element::MAP);
    } else {
        startLeaf(element, properties);
    }
}

void JsonHandler::text(std::string_view piece)
{
    if (!leaf) {
        const std::size_t start = piece.find_first_not_of(WHITE_SPACE);
        if (start != std::string_view::npos) {
            parser.fail(tarn::tools::advance(parser.position(), piece.substr(0, start)),
                        "text outside of strings, numbers and booleans");
        }
        return;
    }
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
        refuse("text in null, which must be empty");
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
    constexpr std::pair<std::string_view, Element> ELEMENTS[] = {
        {"array", Element::ARRAY},     {"boolean", Element::BOOLEAN}, {"map", Element::MAP},
        {"null", Element::NULL_VALUE}, {"number", Element::NUMBER},   {"string", Element::STRING},
    };
    if (name.space != NAMESPACE) {
        refuse(quoted(name.local) + " is not in the namespace " + std::string(NAMESPACE));
    }
    const auto* const element =
        std::ranges::find(ELEMENTS, name.local, [](const auto& each) { return each.first; });
    if (element == std::end(ELEMENTS)) {
        refuse("expected array, boolean, map, null, number or string, found " + quoted(name.local));
    }
    return element->second;
}

/// @param canBeEscaped whether the element may have the attribute `escaped`.
JsonHandler::Properties JsonHandler::propertiesOf(const std::string& element,
                                                  std::span<const Attribute> attributes,
                                                  bool canBeEscaped) const
{
    Properties properties;
    for (const Attribute& attribute : attributes) {
        const auto& [space, local] = attribute.name;
        if (space.empty() && local == "key") {
            properties.key = attribute.value;
        } else if (space.empty() && local == "escaped-key") {
            properties.hasEscapedKey = !containers.empty() && toBoolean(attribute);
        } else if (space.empty() && local == "escaped" && canBeEscaped) {
            properties.isEscaped = toBoolean(attribute);
        } else if (space.empty() || space == NAMESPACE) {
            refuse(element + " cannot have the attribute " + quoted(local));
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

void JsonHandler::writeKey(const std::string& element, const Properties& properties)
{
    if (!properties.key) {
        refuse(element + " in a map has no key");
    }
    const std::string_view key = *properties.key;
    const bool isEscaped = properties.hasEscapedKey.value_or(false);
    std::optional<std::string> unescaped = isEscaped ? unescape(key) : std::string(key);
    if (!unescaped) {
        refuse("a key with an unknown escape sequence");
    }
    if (!format.keepsRepeatedKeys && !containers.back().keys.insert(std::move(*unescaped)).second) {
        refuse("the key is repeated in its map (see --keep-repeated-keys)");
    }
    escaper.start(isEscaped);
    escaper.add(key);
    escaper.end();
}

void JsonHandler::startContainer(bool isMap)
{
    const bool isLines = format.hasLines && containers.empty();
    if (!isLines) {
        // The outermost array of lines is not written, so it is no level.
        if (const std::size_t depth = containers.size() - (format.hasLines ? 1 : 0);
            depth == limits.depth) {
            refuse("nested deeper than " + std::to_string(limits.depth) +
                   " levels (see --max-depth)");
        }
        if (isMap) {
            writer.startObject();
        } else {
            writer.startArray();
        }
    }
    containers.push_back({isMap, {}});
}

void JsonHandler::endContainer()
{
    const bool isMap = containers.back().isMap;
    containers.pop_back();
    if (format.hasLines && containers.empty()) {
        return;
    }
    if (isMap) {
        writer.endObject();
    } else {
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
        if (const std::optional<std::string> number = toJsonNumber(value)) {
            writer.number(*number);
        } else {
            refuseLeaf("the content of number is not a finite number");
        }
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
    const bool isDivided = hasValueEnded || (!value.empty() && WHITE_SPACE.contains(piece.front()));
    if (isDivided) {
        refuseLeaf("white space inside a value");
    }
    if (value.size() + trimmed.size() > limit) {
        refuseLeaf("a value longer than " + std::to_string(limit) + " bytes");
    }
    value += trimmed;
    hasValueEnded = WHITE_SPACE.contains(piece.back());
}

void JsonHandler::refuse(const std::string& problem) const
{
    parser.fail(parser.position(), problem);
}

void JsonHandler::refuseLeaf(const std::string& problem) const
{
    parser.fail(leafStart, problem);
}

} // namespace xml2json
