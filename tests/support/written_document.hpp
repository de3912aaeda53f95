// Documents that are written as the guide says: a parser finds in them the elements, attributes,
// namespaces and text that went in.
#pragma once

#include "support/difference.hpp"
#include "support/Input.hpp"
#include "support/xml_outline.hpp"

#include <tarn/xml/XmlWriter.hpp>

#include <set>
#include <utility>
#include <vector>

namespace tarn::tests {

namespace detail {

/// Writes a document from the choices of an input, and its outline as a parser should find it.
class Document
{
public:
    using Text = std::u16string;

    explicit Document(Input input) : input(input), writer(xml)
    {
        isDeclared = this->input.below(4) != 0;
        if (isDeclared) {
            writer.writeStartDocument();
        }
        writeElement(0, {});
        writer.writeEndDocument();
        outline = withParsedLineEnds(outline);
        for (char16_t& unit : outline) {
            if (isReferred(unit)) {
                unit -= REFERRED;
            }
        }
    }

    std::string xml;
    Text outline;

private:
    static constexpr char16_t XML_NAMESPACE[] = u"http://www.w3.org/XML/1998/namespace";
    /// Added to the code units that come from a reference, until line ends have been replaced.
    static constexpr char16_t REFERRED = 0xE000;

    /// The default namespace in scope, if any.
    struct Default
    {
        Text uri;
        /// Whether names in it get no prefix. If so, all elements need a namespace, and attributes
        /// another one.
        bool isRegistered = false;
    };

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
            return unit == 0 || unit >= 0xFFFE || isReferred(unit) ||
                   (isControl(unit) && !isDeclared);
        });
        return made;
    }

    static bool isControl(char16_t unit) { return unit < u' ' && !isLayout(unit); }
    static bool isLayout(char16_t unit) { return unit == u'\t' || unit == u'\n' || unit == u'\r'; }
    static bool isReferred(char16_t unit)
    {
        return isLayout(static_cast<char16_t>(unit - REFERRED));
    }

    // Writing.

    void writeElement(std::size_t depth, Default inScope)
    {
        enum Choice : std::size_t
        {
            REGISTER,
            DECLARE,
            CHOICES = 8
        };
        const std::size_t choice = inScope.uri.empty() ? input.below(CHOICES) : CHOICES;
        const Text defaultUri = choice <= DECLARE ? u"urn:default" + uri() : u"";
        if (choice == REGISTER) {
            // The end of an attribute would declare it at once.
            writer.writeEndAttribute();
            writer.registerDefaultNamespace(defaultUri);
            inScope = {defaultUri, true};
        }
        const Text elementName = name();
        Text elementUri = choice == DECLARE ? u"" : uri();
        if (elementUri.empty() && inScope.isRegistered) {
            elementUri = inScope.uri;
        }
        writer.writeStartElement(elementName, elementUri, prefix());
        if (choice == DECLARE) {
            writer.writeDefaultNamespace(defaultUri);
            inScope = {defaultUri, false};
        }
        outline += u'<' + outlineOfName(elementUri.empty() ? inScope.uri : elementUri, elementName);
        std::set<std::pair<Text, Text>> attributeNames;
        while (input.below(3) != 0) {
            const Text localName = name();
            const Text namespaceUri = uri();
            if (!namespaceUri.empty() && input.below(4) == 0) {
                writer.writeNamespace(namespaceUri, prefix());
            } else if (attributeNames.insert({namespaceUri, localName}).second) {
                writeAttribute(localName, namespaceUri);
            }
        }
        outline += u'>';
        bool hasChildren = false;
        constexpr std::size_t DEEPEST = 100;
        while (!input.isEmpty() && depth < DEEPEST && input.below(8) != 0) {
            if (input.below(2) == 0) {
                hasChildren = true;
                outline += line(depth + 1);
                writeElement(depth + 1, inScope);
            } else {
                writeContent();
            }
        }
        writer.writeEndElement();
        outline += (hasChildren ? line(depth) : u"") + u"</>";
    }

    void writeAttribute(const Text& localName, const Text& namespaceUri)
    {
        Text value = text();
        writer.writeStartAttribute(localName, namespaceUri, prefix());
        writer.writeValue(value);
        if (input.below(2) == 0) {
            value += writeReference();
        }
        if (input.below(2) == 0) {
            // Else what follows ends it.
            writer.writeEndAttribute();
        }
        // A parser makes a space of each layout character (XML 1.0, 3.3.3).
        value = withParsedLineEnds(withoutControls(value));
        std::ranges::replace_if(value, isLayout, u' ');
        outline += u' ' + outlineOfName(namespaceUri, localName) + u"=\"" + value + u'"';
    }

    /// @returns what it means in the outline.
    Text writeReference()
    {
        static const std::pair<Text, Text> REFERENCES[] = {{u"&#9;", u"\xE009"},
                                                           {u"&#10;", u"\xE00A"},
                                                           {u"&#13;", u"\xE00D"},
                                                           {u"&#x1F600;", u"\U0001F600"}};
        const auto& [raw, meaning] = input.pick(REFERENCES);
        writer.writeRawXml(raw);
        return meaning;
    }

    void writeContent()
    {
        static const std::pair<Text, Text> CONTENT[] = {{u"<!-- < -->", u"<!-- < -->"},
                                                        {u"<?p < ?>", u"<?p < ?>"},
                                                        {u"<![CDATA[&<a>]]>", u"&<a>"}};
        const std::size_t kind = input.below(8);
        if (kind > 1) {
            const Text value = text();
            writer.writeEndAttribute();
            writer.writeValue(value);
            outline += withoutControls(value);
            return;
        }
        writer.writeStartElementClose();
        if (kind == 1) {
            outline += writeReference();
        } else {
            const auto& [raw, meaning] = input.pick(CONTENT);
            writer.writeRawXml(raw);
            outline += meaning;
        }
    }

    // What calls mean.

    static Text outlineOfName(const Text& uri, const Text& name)
    {
        return u'{' + uri + u'}' + name;
    }

    static Text line(std::size_t depth) { return u'\n' + Text(2 * depth, u' '); }

    /// What the writer writes of @p text.
    static Text withoutControls(Text text)
    {
        constexpr char16_t VERTICAL_TAB = 0x0B;
        std::ranges::replace(text, VERTICAL_TAB, u' ');
        std::erase_if(text, isControl);
        return text;
    }

    /// A parser makes one line feed of each kind of line end (XML 1.0, 2.11).
    static Text withParsedLineEnds(Text text)
    {
        for (std::size_t pair = 0; (pair = text.find(u"\r\n", pair)) != Text::npos;) {
            text.erase(pair, 1);
        }
        std::ranges::replace(text, u'\r', u'\n');
        return text;
    }

    Input input;
    utils::XmlWriter writer;
    bool isDeclared = false;
};

} // namespace detail

/// Writes a document from @p input and reads it with libxml2.
/// @returns what is wrong with it; nothing if it says what went in.
inline std::string faultOfDocument(Input input)
{
    const detail::Document document(input);
    const std::string fault =
        difference(outlineOfXml(document.xml), referenceUtf8(document.outline));
    return fault.empty() ? "" : "the document\n" + document.xml + '\n' + fault;
}

} // namespace tarn::tests
