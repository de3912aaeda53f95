// JsonHandler: writes the XML representation of JSON from XPath and XQuery Functions and Operators
// 3.1 as JSON.
#pragma once

#include "tools/xml2json/JsonWriter.hpp"
#include "tools/xml2json/KeySet.hpp"
#include "tools/xml2json/limits.hpp"
#include "tools/xml2json/StringEscaper.hpp"
#include "tools/xml2json/XmlParser.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace xml2json {

/// What the JSON looks like, and what is let through.
struct Format
{
    /// The number of blanks for each level; without it everything stands on one line.
    std::optional<unsigned> indentation = std::nullopt;

    /// Each member of the outermost array is written on a line of its own, without the array.
    bool hasLines = false;

    /// Repeated keys of an object are kept instead of refused.
    bool keepsRepeatedKeys = false;
};

class JsonHandler : public XmlEvents
{
public:
    /// @param parser the parser that reports the events. It knows the position that a message
    ///        names.
    JsonHandler(const XmlParser& parser, std::ostream& output, const Limits& limits,
                const Format& format);

    void startElement(const Name& name, std::span<const Attribute> attributes) override;
    void text(std::string_view piece) override;
    void endElement() override;

    /// Ends the last line and pushes all text to the output.
    void finish();

private:
    /// What the elements are called.
    enum class Element
    {
        ARRAY,
        BOOLEAN,
        MAP,
        NULL_VALUE,
        NUMBER,
        STRING
    };

    /// What the attributes of an element say. A value that is absent is not set.
    struct Properties
    {
        std::optional<std::string_view> key;
        std::optional<bool> hasEscapedKey;
        bool isEscaped = false;
    };

    Element elementOf(const Name& name) const;
    Properties propertiesOf(std::string_view element, std::span<const Attribute> attributes,
                            bool canBeEscaped) const;
    bool toBoolean(const Attribute& attribute) const;
    void writeKey(std::string_view element, const Properties& properties);
    void startContainer(Element element);
    void startKeys();
    void endContainer();
    void startLeaf(Element element, const Properties& properties);
    void leafText(std::string_view piece);
    void endLeaf();
    void addToValue(std::string_view piece, std::size_t limit);
    bool isOutermostArrayOfLines() const { return format.hasLines && containers.size() == 1; }

    /// Throws with the position of the event.
    [[noreturn]] void refuse(const std::string& problem) const;
    /// Throws with the position of text in the piece that is being reported.
    [[noreturn]] void refuseText(std::string_view whiteSpaceBefore) const;
    /// Throws with the position of the element that is no array and no map.
    [[noreturn]] void refuseLeaf(const std::string& problem) const;

    const XmlParser& parser;
    const Limits limits;
    const Format format;
    JsonWriter writer;
    StringEscaper escaper;

    /// The arrays and maps that are open, with the outermost array of lines.
    std::vector<Element> containers;

    /// The unescaped keys of the maps that are open, unless repeated ones are kept. What follows
    /// them is kept to use its memory again.
    std::vector<KeySet> keys;
    std::size_t openMaps = 0;

    /// The other element that is open, and where it begins.
    std::optional<Element> leaf;
    tarn::tools::Position leafStart;

    /// The text of a number or boolean, without the white space around it; and whether white space
    /// has followed it.
    std::string value;
    bool hasValueEnded = false;
};

} // namespace xml2json
