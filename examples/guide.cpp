// The snippets of docs/guide.md about the plain writer, and what each of them writes.
#include <tarn/xml/XmlWriter.hpp>

#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using tarn::utils::XmlWriter;

// [snippet: constants]
const std::u16string NONE;
const std::u16string ATOM = u"http://www.w3.org/2005/Atom";
const std::u16string DUBLIN_CORE = u"http://purl.org/dc/terms/";
// [end]

std::string firstElement()
{
    // [snippet: first-element]
    std::string xml;
    tarn::utils::XmlWriter writer(xml);
    writer.writeStartDocument();
    writer.writeElement(u"greeting", u"Hello, world");
    writer.writeEndDocument();
    // [end]
    return xml;
}

void elements(XmlWriter& writer)
{
    // [snippet: elements]
    writer.writeStartElement(u"lake", NONE, NONE);
    writer.writeElement(u"name", u"Lac d'Annecy");
    writer.writeElement(u"islands", u"");
    writer.writeEmptyElement(u"frozen", NONE, NONE);
    writer.writeStartElement(u"depth", NONE, NONE);
    writer.writeValue(u"81");
    writer.writeValue(u".8 m");
    writer.writeEndElement();
    writer.writeEndElement();
    // [end]
}

void generatedPrefixes(XmlWriter& writer)
{
    // [snippet: generated-prefixes]
    writer.writeStartElement(u"feed", ATOM, NONE);
    writer.writeElement(u"spatial", DUBLIN_CORE, u"Valais");
    writer.writeElement(u"title", ATOM, u"Peaks");
    writer.writeEndElement();
    // [end]
}

void preferredPrefixes(XmlWriter& writer)
{
    // [snippet: preferred-prefixes]
    writer.writeStartElement(u"feed", ATOM, u"atom");
    writer.writeElement(u"spatial", DUBLIN_CORE, u"dc", u"Valais");
    writer.writeElement(u"title", ATOM, u"Peaks");
    writer.writeEndElement();
    // [end]
}

void refusedPrefixes(XmlWriter& writer)
{
    // [snippet: refused-prefixes]
    writer.writeStartElement(u"feed", ATOM, u"a");
    writer.writeElement(u"title", ATOM, u"atom", u"bound already");
    writer.writeElement(u"spatial", DUBLIN_CORE, u"a", u"prefix in use");
    writer.writeElement(u"spatial", DUBLIN_CORE, u"dc", u"free to choose again");
    writer.writeEndElement();
    // [end]
}

void declaredAgain(XmlWriter& writer)
{
    // [snippet: declared-again]
    writer.writeStartElement(u"places", NONE, NONE);
    writer.writeElement(u"spatial", DUBLIN_CORE, u"dc", u"Valais");
    writer.writeElement(u"spatial", DUBLIN_CORE, u"dc", u"Savoie");
    writer.writeEndElement();
    // [end]
}

void declaredOnce(XmlWriter& writer)
{
    // [snippet: declared-once]
    writer.writeStartElement(u"places", NONE, NONE);
    writer.writeNamespace(DUBLIN_CORE, u"dc");
    writer.writeElement(u"spatial", DUBLIN_CORE, u"Valais");
    writer.writeElement(u"spatial", DUBLIN_CORE, u"Savoie");
    writer.writeEndElement();
    // [end]
}

void declaredByAttribute(XmlWriter& writer)
{
    // [snippet: declared-by-attribute]
    writer.writeStartElement(u"entry", NONE, NONE);
    writer.writeAttribute(u"date", DUBLIN_CORE, u"dc", u"2024-05-01");
    writer.writeAttribute(u"lang", u"http://www.w3.org/XML/1998/namespace", u"de");
    writer.writeEndElement();
    // [end]
}

void defaultNamespace(XmlWriter& writer)
{
    // [snippet: default-namespace]
    writer.registerDefaultNamespace(ATOM);
    writer.writeStartElement(u"feed", ATOM, NONE);
    writer.writeElement(u"title", ATOM, u"Peaks");
    writer.writeElement(u"spatial", DUBLIN_CORE, u"dc", u"Valais");
    writer.writeEndElement();
    // [end]
}

void declaredOnly(XmlWriter& writer)
{
    // [snippet: declared-only]
    writer.writeStartElement(u"feed", NONE, NONE);
    writer.writeDefaultNamespace(ATOM);
    writer.writeElement(u"title", u"Peaks");
    writer.writeElement(u"id", ATOM, u"urn:peaks");
    writer.writeEndElement();
    // [end]
}

void attributes(XmlWriter& writer)
{
    // [snippet: attributes]
    writer.writeStartElement(u"path", NONE, NONE);
    writer.writeAttribute(u"id", u"ridge");
    writer.writeStartAttribute(u"d", NONE, NONE);
    for (const char16_t* const step : {u"M0 0", u" L10 20", u" L30 0"}) {
        writer.writeValue(step);
    }
    writer.writeEndAttribute();
    writer.writeValue(u"text");
    writer.writeAttribute(u"late", u" and more text");
    writer.writeEndElement();
    // [end]
}

void rawText(XmlWriter& writer)
{
    // [snippet: raw-text]
    writer.writeStartElement(u"summary", NONE, NONE);
    writer.writeAttribute(u"type", u"xhtml");
    writer.writeStartElementClose();
    writer.writeRawXml(u"<p>One &amp; <em>two</em></p>");
    writer.writeValue(u" & three");
    writer.writeEndElement();
    // [end]
}

std::string controls(const std::u16string& version)
{
    // [snippet: control-characters]
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartDocument(version);
    writer.writeElement(u"line", u"bell \x07, vertical\vtab, tab\t.");
    writer.writeEndDocument();
    // [end]
    return xml;
}

std::string controls10()
{
    return controls(XmlWriter::DEFAULT_VERSION);
}

std::string controls11()
{
    return controls(u"1.1");
}

std::string batches()
{
    std::ostringstream report;
    // [snippet: batches]
    std::u16string units;
    std::string bytes;
    XmlWriter toUnits(units);
    XmlWriter toBytes(bytes);
    for (XmlWriter* const writer : {&toUnits, &toBytes}) {
        writer->writeStartElement(u"p", NONE, NONE);
        writer->writeValue(u"5 \u20AC");
    }
    report << "before: " << units.size() << " units, " << bytes.size() << " bytes\n";
    toUnits.writeEndDocument();
    toBytes.writeEndDocument();
    report << "after: " << units.size() << " units, " << bytes.size() << " bytes";
    // [end]
    return report.str();
}

std::string withoutEnd()
{
    // [snippet: without-end]
    std::string xml;
    {
        XmlWriter writer(xml);
        writer.writeElement(u"greeting", u"Hello, world");
    }
    return xml.empty() ? "nothing arrived" : xml;
    // [end]
}

std::string failingStream()
{
    // [snippet: failing-stream]
    std::ofstream file("/no/such/directory/feed.xml");
    file.exceptions(std::ios::badbit);
    try {
        XmlWriter writer(file);
        writer.writeStartDocument();
        writer.writeElement(u"greeting", u"Hello, world");
        writer.writeEndDocument();
        file.close();
        return file ? "written" : "not written";
    } catch (const std::ios::failure&) {
        return "not written";
    }
    // [end]
}

/// What @p snippet writes below the XML declaration.
std::string body(void (*snippet)(XmlWriter&))
{
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartDocument();
    snippet(writer);
    writer.writeEndDocument();
    return xml.substr(xml.find('\n') + 1);
}

void print(const char* name, const std::string& text)
{
    std::cout << "== " << name << '\n' << text << '\n';
}

} // namespace

int main()
{
    print("first-element", firstElement());
    print("elements", body(elements));
    print("generated-prefixes", body(generatedPrefixes));
    print("preferred-prefixes", body(preferredPrefixes));
    print("refused-prefixes", body(refusedPrefixes));
    print("declared-again", body(declaredAgain));
    print("declared-once", body(declaredOnce));
    print("declared-by-attribute", body(declaredByAttribute));
    print("default-namespace", body(defaultNamespace));
    print("declared-only", body(declaredOnly));
    print("attributes", body(attributes));
    print("raw-text", body(rawText));
    print("control-characters-1.0", controls10());
    print("control-characters-1.1", controls11());
    print("batches", batches());
    print("without-end", withoutEnd());
    print("failing-stream", failingStream());
    return std::cout ? 0 : 1;
}
