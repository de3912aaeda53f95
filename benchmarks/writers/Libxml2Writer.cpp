// libxml2's xmlTextWriter: UTF-8 and qualified names in, UTF-8 out.
#include "benchmarks/registry.hpp"

#include <libxml/xmlwriter.h>

namespace benchmarks {

namespace {

const xmlChar* characters(const std::string& text)
{
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

class Libxml2Writer
{
public:
    using String = std::string;

    Libxml2Writer()
    {
        xmlTextWriterSetIndent(writer, 1);
        xmlTextWriterSetIndentString(writer, BAD_CAST "  ");
        xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
    }

    ~Libxml2Writer()
    {
        xmlFreeTextWriter(writer);
        xmlBufferFree(target);
    }

    Libxml2Writer(const Libxml2Writer&) = delete;
    Libxml2Writer& operator=(const Libxml2Writer&) = delete;

    void startElement(const Name<String>& name)
    {
        xmlTextWriterStartElement(writer, characters(name.qualifiedName));
    }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& declared)
    {
        startElement(name);
        for (const Namespace<String>& space : declared) {
            xmlTextWriterWriteAttribute(writer, characters(space.declaration),
                                        characters(space.uri));
        }
    }

    void attribute(const Name<String>& name, const String& value)
    {
        xmlTextWriterWriteAttribute(writer, characters(name.qualifiedName), characters(value));
    }

    void text(const String& value) { xmlTextWriterWriteString(writer, characters(value)); }

    void endElement() { xmlTextWriterEndElement(writer); }

    void textElement(const Name<String>& name, const String& value)
    {
        xmlTextWriterWriteElement(writer, characters(name.qualifiedName), characters(value));
    }

    std::string_view finish()
    {
        xmlTextWriterEndDocument(writer);
        xmlTextWriterFlush(writer);
        return {reinterpret_cast<const char*>(xmlBufferContent(target)),
                static_cast<std::size_t>(xmlBufferLength(target))};
    }

private:
    xmlBuffer* target = xmlBufferCreate();
    xmlTextWriter* writer = xmlNewTextWriterMemory(target, 0);
};

const Registration<Libxml2Writer> registration("libxml2", LIBXML_DOTTED_VERSION);

} // namespace

} // namespace benchmarks
