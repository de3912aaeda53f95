// Documents read back by a parser: the names, namespaces, attributes and texts that went in come
// out.

#include "support/ReferenceUtf8.hpp"

#include <tarn/xml/XmlWriter.hpp>

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <map>
#include <memory>
#include <random>

namespace tarn::tests {

namespace {

/// What a document says, whichever prefixes it uses.
struct Element
{
    std::u16string uri;
    std::u16string name;
    std::map<std::pair<std::u16string, std::u16string>, std::u16string> attributes;
    std::u16string text;
    std::vector<Element> children;
};

class DocumentGenerator
{
public:
    explicit DocumentGenerator(unsigned seed) : random(seed) {}

    Element element(int depth = 0)
    {
        Element made{uri(), name(), {}, {}, {}};
        for (std::size_t count = random() % 4; count-- > 0;) {
            made.attributes[{uri(), name()}] = text();
        }
        if (depth < 5 && random() % 3 != 0) {
            for (std::size_t count = random() % 5; count-- > 0;) {
                made.children.push_back(element(depth + 1));
            }
        }
        if (made.children.empty()) {
            made.text = text();
        }
        return made;
    }

    std::u16string prefix()
    {
        static const std::u16string PREFIXES[] = {u"", u"p", u"q", u"ns3"};
        return PREFIXES[random() % std::size(PREFIXES)];
    }

private:
    std::u16string uri()
    {
        static const std::u16string URIS[] = {u"", u"urn:a", u"urn:b?x=1&y='2'", u"urn:c"};
        return URIS[random() % std::size(URIS)];
    }

    std::u16string name()
    {
        static const std::u16string NAMES[] = {u"a", u"long-local-name", u"\u00E9t\u00E9", u"_7"};
        return NAMES[random() % std::size(NAMES)];
    }

    std::u16string text()
    {
        static const std::u16string PIECES[] = {u"word ",        u"<",          u">",   u"&",
                                                u"\"",           u"'",          u"]]>", u"\u00E9",
                                                u"\u4E2D\u6587", u"\U0001F600", u" "};
        std::u16string made;
        for (std::size_t count = random() % 30; count-- > 0;) {
            made += PIECES[random() % std::size(PIECES)];
        }
        return made;
    }

    std::mt19937 random;
};

void write(const Element& element, DocumentGenerator& generator, utils::XmlWriter& writer)
{
    writer.writeStartElement(element.name, element.uri, generator.prefix());
    for (const auto& [name, value] : element.attributes) {
        writer.writeAttribute(name.second, name.first, generator.prefix(), value);
    }
    if (!element.text.empty()) {
        writer.writeValue(element.text);
    }
    for (const Element& child : element.children) {
        write(child, generator, writer);
    }
    writer.writeEndElement();
}

std::string textOf(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

std::string uriOf(const xmlNs* space)
{
    return space != nullptr ? textOf(space->href) : "";
}

void compare(const xmlNode* node, const Element& element)
{
    ASSERT_EQ(textOf(node->name), referenceUtf8(element.name));
    ASSERT_EQ(uriOf(node->ns), referenceUtf8(element.uri));
    std::map<std::pair<std::string, std::string>, std::string> attributes;
    for (const xmlAttr* each = node->properties; each != nullptr; each = each->next) {
        attributes[{uriOf(each->ns), textOf(each->name)}] =
            each->children != nullptr ? textOf(each->children->content) : "";
    }
    ASSERT_EQ(attributes.size(), element.attributes.size());
    for (const auto& [name, value] : element.attributes) {
        ASSERT_EQ((attributes[{referenceUtf8(name.first), referenceUtf8(name.second)}]),
                  referenceUtf8(value));
    }
    auto child = element.children.begin();
    std::string text;
    for (const xmlNode* each = node->children; each != nullptr; each = each->next) {
        if (each->type != XML_ELEMENT_NODE) {
            text += textOf(each->content);
            continue;
        }
        ASSERT_NE(child, element.children.end());
        ASSERT_NO_FATAL_FAILURE(compare(each, *child++));
    }
    ASSERT_EQ(child, element.children.end());
    if (element.children.empty()) {
        ASSERT_EQ(text, referenceUtf8(element.text));
    }
}

TEST(ReadBack, GivesWhatWasWritten)
{
    for (unsigned seed = 0; seed < 300; ++seed) {
        DocumentGenerator generator(seed);
        const Element root = generator.element();
        std::string xml;
        utils::XmlWriter writer(xml);
        writer.writeStartDocument();
        write(root, generator, writer);
        writer.writeEndDocument();

        const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
            xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                          XML_PARSE_NOENT | XML_PARSE_NONET),
            xmlFreeDoc);
        ASSERT_NE(document, nullptr) << xml;
        ASSERT_NO_FATAL_FAILURE(compare(xmlDocGetRootElement(document.get()), root)) << xml;
    }
    xmlCleanupParser();
}

} // namespace

} // namespace tarn::tests
