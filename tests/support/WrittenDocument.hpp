// Documents that are written as the guide says: libxml2 finds in them the elements, attributes,
// namespaces and text that went in.
#pragma once

#include "support/Input.hpp"
#include "support/ReferenceUtf8.hpp"

#include <tarn/xml/XmlWriter.hpp>

#include <libxml/parser.h>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace tarn::tests {

namespace detail {

using Text = std::u16string;

inline const Text XML_NAMESPACE = u"http://www.w3.org/XML/1998/namespace";

/// An outline is what a document says, prefixes aside: `<{URI}NAME xmlns={URI} {URI}NAME="VALUE">`
/// for a start tag, `</>` for an end tag, `<!>` for a comment or a processing instruction.
inline Text outlineOfName(const Text& uri, const Text& name)
{
    return u'{' + uri + u'}' + name;
}

/// Writes a document from the choices of an input, and its outline as a parser should find it.
class Document
{
public:
    explicit Document(Input input) : input(input), writer(xml) {}

    void write()
    {
        isDeclared = input.below(4) != 0;
        if (isDeclared) {
            writer.writeStartDocument();
        }
        startElement();
        while (!levels.empty() && !input.isEmpty()) {
            makeCall();
        }
        writer.writeEndDocument();
        while (!levels.empty()) {
            noteEnd();
        }
    }

    std::string xml;
    Text outline;

private:
    /// An open element.
    struct Level
    {
        Text uri;
        Text name;
        bool isPrefixed = false;
        /// The default namespace for a parser, and whether it is declared on this start tag.
        Text defaultUri;
        bool declaresDefault = false;
        /// The namespace names whose bindings end with this element.
        std::vector<Text> declared;
        std::set<std::pair<Text, Text>> attributeNames;
        /// In the outline.
        Text declarations;
        Text attributes;
    };

    void makeCall()
    {
        enum Choice : std::size_t
        {
            START,
            END,
            ELEMENT,
            EMPTY_ELEMENT,
            ATTRIBUTE,
            ATTRIBUTE_START,
            ATTRIBUTE_END,
            VALUE,
            CLOSE,
            NAMESPACE,
            DEFAULT_NAMESPACE,
            RAW,
            CHOICES
        };
        switch (input.below(CHOICES)) {
        case START:
            return startElement();
        case END:
            writer.writeEndElement();
            return noteEnd();
        case ELEMENT:
            return writeElement();
        case EMPTY_ELEMENT:
            return writeEmptyElement();
        case ATTRIBUTE:
            return writeAttribute();
        case ATTRIBUTE_START:
            return startAttribute();
        case ATTRIBUTE_END:
            writer.writeEndAttribute();
            return noteAttributeEnd();
        case VALUE: {
            const Text value = text();
            writer.writeValue(value);
            return noteValue(value);
        }
        case CLOSE:
            writer.writeStartElementClose();
            return noteClose();
        case NAMESPACE:
            return writeNamespace();
        case DEFAULT_NAMESPACE:
            return writeDefaultNamespace();
        case RAW:
            return writeRaw();
        }
    }

    // Choices.

    /// Never with an `x`, so that neither `xml` nor `xmlns` comes up.
    Text name()
    {
        static const Text BEGINNINGS[] = {u"a",      u"p",      u"ns",        u"_",
                                          u"\u00E9", u"\u4E2D", u"\U00010400"};
        static const Text CONTINUATIONS[] = {u"1", u"2", u"-", u".", u"lang", u"\u00B7"};
        Text made = input.pick(BEGINNINGS);
        for (std::size_t left = input.below(4); left > 0; --left) {
            made += input.pick(CONTINUATIONS);
        }
        return made;
    }

    Text prefix() { return input.below(3) == 0 ? Text() : name(); }

    Text uri()
    {
        static const Text BEGINNINGS[] = {u"", XML_NAMESPACE, u"urn:a", u"urn:b", u"urn:&"};
        static const Text ENDINGS[] = {u"",   u"",           u"'",
                                       u"/1", u"/2?c&d='e'", u"/a/rather/long/name/of/a/namespace"};
        const Text& beginning = input.pick(BEGINNINGS);
        return beginning.starts_with(u"urn:") ? beginning + input.pick(ENDINGS) : beginning;
    }

    /// Characters of XML, and control characters if the declaration makes the writer leave them
    /// out.
    Text text()
    {
        Text made = input.text();
        std::erase_if(made, [&](char16_t unit) {
            return unit == 0 || unit >= 0xFFFE || (isControl(unit) && !isDeclared);
        });
        return made;
    }

    static bool isControl(char16_t unit)
    {
        return unit < u' ' && unit != u'\t' && unit != u'\n' && unit != u'\r';
    }

    // Calls.

    void startElement()
    {
        constexpr std::size_t DEEPEST = 100;
        if (levels.size() == DEEPEST) {
            return;
        }
        const bool hasDefault = input.below(4) == 0;
        const Text defaultUri = hasDefault ? uri() : Text();
        const Text elementName = name();
        const Text elementUri = uri();
        if (hasDefault && defaultUri != XML_NAMESPACE) {
            // The end of an attribute would declare it at once.
            writer.writeEndAttribute();
            noteAttributeEnd();
            writer.registerDefaultNamespace(defaultUri);
            bindings.try_emplace(defaultUri, false);
            writer.writeStartElement(elementName, elementUri, prefix());
            noteStart(elementName, elementUri, &defaultUri);
        } else {
            writer.writeStartElement(elementName, elementUri, prefix());
            noteStart(elementName, elementUri);
        }
    }

    void writeElement()
    {
        const Text elementName = name();
        const Text elementUri = uri();
        const Text value = text();
        if (elementUri.empty()) {
            writer.writeElement(elementName, value);
        } else if (const Text elementPrefix = prefix(); elementPrefix.empty()) {
            writer.writeElement(elementName, elementUri, value);
        } else {
            writer.writeElement(elementName, elementUri, elementPrefix, value);
        }
        noteStart(elementName, elementUri);
        noteClose();
        noteValue(value);
        noteEnd();
    }

    void writeEmptyElement()
    {
        const Text elementName = name();
        const Text elementUri = uri();
        writer.writeEmptyElement(elementName, elementUri, prefix());
        noteStart(elementName, elementUri);
        noteEnd();
    }

    void writeAttribute()
    {
        const Text attributeName = name();
        const Text attributeUri = uri();
        const Text value = text();
        if (!canHaveAttribute(attributeUri, attributeName)) {
            return;
        }
        if (attributeUri.empty()) {
            writer.writeAttribute(attributeName, value);
        } else if (const Text attributePrefix = prefix(); attributePrefix.empty()) {
            writer.writeAttribute(attributeName, attributeUri, value);
        } else {
            writer.writeAttribute(attributeName, attributeUri, attributePrefix, value);
        }
        noteAttributeStart(attributeName, attributeUri);
        noteValue(value);
        noteAttributeEnd();
    }

    void startAttribute()
    {
        const Text attributeName = name();
        const Text attributeUri = uri();
        if (canHaveAttribute(attributeUri, attributeName)) {
            writer.writeStartAttribute(attributeName, attributeUri, prefix());
            noteAttributeStart(attributeName, attributeUri);
        }
    }

    void writeNamespace()
    {
        const Text namespaceUri = uri();
        if (namespaceUri.empty()) {
            return;
        }
        writer.writeNamespace(namespaceUri, prefix());
        noteAttributeEnd();
        if (isInStartTag) {
            isPrefixedIn(namespaceUri);
        }
    }

    void writeDefaultNamespace()
    {
        const Text namespaceUri = uri();
        Level& level = levels.back();
        if (namespaceUri == XML_NAMESPACE || (isInStartTag && level.declaresDefault)) {
            return;
        }
        writer.writeDefaultNamespace(namespaceUri);
        if (isInStartTag) {
            noteAttributeEnd();
            noteDeclaration(namespaceUri);
            noteDefault(namespaceUri);
        } else {
            noteValue(namespaceUri);
        }
    }

    void writeRaw()
    {
        static const std::pair<Text, Text> REFERENCES[] = {
            {u"&#9;", u"\t"}, {u"&#10;", u"\n"}, {u"&#13;", u"\r"}, {u"&#x1F600;", u"\U0001F600"}};
        static const std::pair<Text, Text> CONTENT[] = {
            {u"<!-- < -->", u"<!>"}, {u"<?p < ?>", u"<!>"}, {u"<![CDATA[&<a>]]>", u"&<a>"}};
        if (!isInAttribute) {
            writer.writeStartElementClose();
            noteClose();
        }
        const auto& [raw, meaning] =
            isInAttribute || input.below(2) == 0 ? input.pick(REFERENCES) : input.pick(CONTENT);
        writer.writeRawXml(raw);
        (isInAttribute ? levels.back().attributes : outline) += meaning;
        followsCarriageReturn = false;
    }

    // What calls mean.

    /// Whether a name in @p uri gets a prefix, for which the namespace is bound if it is not yet.
    bool isPrefixedIn(const Text& uri)
    {
        if (uri.empty()) {
            return false;
        }
        const auto [binding, isNew] = bindings.try_emplace(uri, true);
        if (isNew) {
            noteBindingDeclaration(uri);
        }
        return binding->second;
    }

    bool canHaveAttribute(const Text& uri, const Text& name) const
    {
        const auto binding = bindings.find(uri);
        const bool isPrefixed = binding == bindings.end() ? !uri.empty() : binding->second;
        return !isInStartTag ||
               !levels.back().attributeNames.contains({isPrefixed ? uri : Text(), name});
    }

    void noteDeclaration(const Text& uri)
    {
        levels.back().declarations += u" xmlns=" + outlineOfName(uri, u"");
    }

    void noteDefault(const Text& uri)
    {
        levels.back().defaultUri = uri;
        levels.back().declaresDefault = true;
    }

    void noteBindingDeclaration(const Text& uri)
    {
        noteDeclaration(uri);
        levels.back().declared.push_back(uri);
        if (!bindings.at(uri)) {
            noteDefault(uri);
        }
    }

    void noteStart(const Text& name, const Text& uri, const Text* registered = nullptr)
    {
        noteClose();
        if (!levels.empty()) {
            noteLine(levels.size());
        }
        Level level;
        level.uri = uri;
        level.name = name;
        if (!levels.empty()) {
            level.defaultUri = levels.back().defaultUri;
        }
        levels.push_back(std::move(level));
        if (registered != nullptr) {
            noteBindingDeclaration(*registered);
        }
        levels.back().isPrefixed = isPrefixedIn(uri);
        isInStartTag = true;
    }

    void noteClose()
    {
        noteAttributeEnd();
        if (isInStartTag) {
            // Only now are all its declarations known, which hold for its own name too.
            const Level& level = levels.back();
            outline += u'<' +
                       outlineOfName(level.isPrefixed ? level.uri : level.defaultUri, level.name) +
                       level.declarations + level.attributes + u'>';
            isInStartTag = false;
            followsEnd = false;
            followsCarriageReturn = false;
        }
    }

    void noteEnd()
    {
        noteClose();
        if (followsEnd) {
            noteLine(levels.size() - 1);
        }
        outline += u"</>";
        for (const Text& uri : levels.back().declared) {
            bindings.erase(uri);
        }
        levels.pop_back();
        followsEnd = true;
        followsCarriageReturn = false;
    }

    void noteAttributeStart(const Text& name, const Text& uri)
    {
        noteAttributeEnd();
        if (isInStartTag) {
            const Text nameUri = isPrefixedIn(uri) ? uri : Text();
            levels.back().attributeNames.insert({nameUri, name});
            levels.back().attributes += u' ' + outlineOfName(nameUri, name) + u"=\"";
            isInAttribute = true;
            followsCarriageReturn = false;
        }
    }

    void noteAttributeEnd()
    {
        if (isInAttribute) {
            levels.back().attributes += u'"';
            isInAttribute = false;
        }
    }

    void noteValue(const Text& value)
    {
        if (!isInAttribute) {
            noteClose();
        }
        noteText(value);
    }

    void noteLine(std::size_t depth) { noteText(u'\n' + Text(2 * depth, u' ')); }

    /// Text as a parser gives it back, which makes one line feed of each kind of line end (XML 1.0,
    /// 2.11), and in an attribute a space of every white space (3.3.3).
    void noteText(const Text& text)
    {
        Text& noted = isInAttribute ? levels.back().attributes : outline;
        for (char16_t unit : text) {
            if (isControl(unit)) {
                constexpr char16_t VERTICAL_TAB = 0x0B;
                if (unit != VERTICAL_TAB) {
                    continue;
                }
                unit = u' ';
            }
            const bool isSecondOfLineEnd =
                std::exchange(followsCarriageReturn, unit == u'\r') && unit == u'\n';
            const bool isWhiteSpace = unit == u'\t' || unit == u'\n' || unit == u'\r';
            if (!isSecondOfLineEnd) {
                noted += isWhiteSpace && isInAttribute ? u' ' : unit == u'\r' ? u'\n' : unit;
            }
        }
    }

    Input input;
    utils::XmlWriter writer;
    bool isDeclared = false;
    std::vector<Level> levels;
    /// The namespace names that are bound for the writer, and whether to a prefix.
    std::map<Text, bool> bindings{{XML_NAMESPACE, true}};
    bool isInStartTag = false; ///< In an attribute value or not.
    bool isInAttribute = false;
    bool followsEnd = false; ///< The last tag was an end tag or an empty-element tag.
    bool followsCarriageReturn = false;
};

inline std::string toString(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

inline std::string outlineOfName(const xmlNs* space, const xmlChar* name)
{
    return '{' + (space != nullptr ? toString(space->href) : "") + '}' + toString(name);
}

inline void outlineNodes(const xmlNode* node, std::string& outline)
{
    for (; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE) {
            outline += toString(node->content);
        } else if (node->type != XML_ELEMENT_NODE) {
            outline += "<!>";
        } else {
            outline += '<' + outlineOfName(node->ns, node->name);
            for (const xmlNs* space = node->nsDef; space != nullptr; space = space->next) {
                outline += " xmlns=" + outlineOfName(space, nullptr);
            }
            for (const xmlAttr* each = node->properties; each != nullptr; each = each->next) {
                outline += ' ' + outlineOfName(each->ns, each->name) + "=\"";
                outlineNodes(each->children, outline);
                outline += '"';
            }
            outline += '>';
            outlineNodes(node->children, outline);
            outline += "</>";
        }
    }
}

} // namespace detail

/// Writes a document from @p input and reads it with libxml2.
/// @returns what is wrong with it; nothing if it says what went in.
inline std::string faultOfDocument(Input input)
{
    detail::Document document(input);
    document.write();
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(),
                                                                              xmlFreeParserCtxt);
    constexpr int OPTIONS = XML_PARSE_NOENT | XML_PARSE_NOCDATA | XML_PARSE_HUGE | XML_PARSE_NONET |
                            XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> parsed(
        xmlCtxtReadMemory(parser.get(), document.xml.data(), static_cast<int>(document.xml.size()),
                          nullptr, nullptr, OPTIONS),
        xmlFreeDoc);
    if (parsed == nullptr || parser->wellFormed != 1 || parser->nsWellFormed != 1) {
        return "libxml2 refuses the document (" +
               detail::toString(reinterpret_cast<const xmlChar*>(parser->lastError.message)) +
               "):\n" + document.xml;
    }
    std::string outline;
    detail::outlineNodes(xmlDocGetRootElement(parsed.get()), outline);
    const std::string expected = referenceUtf8(document.outline);
    return outline == expected ? ""
                               : "the document\n" + document.xml + "\nsays\n" + outline +
                                     "\nand should say\n" + expected;
}

} // namespace tarn::tests
