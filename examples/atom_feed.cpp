// Writes an Atom feed whose entries carry Dublin Core terms: two namespaces, one of them the
// default.
#include <tarn/xml/XmlWriter.hpp>

#include <iostream>
#include <string>
#include <vector>

namespace {

const std::u16string NONE;
const std::u16string ATOM = u"http://www.w3.org/2005/Atom";
const std::u16string DUBLIN_CORE = u"http://purl.org/dc/terms/";

struct Entry
{
    std::u16string title;
    std::u16string id;
    std::u16string updated;
    std::u16string link;
    std::u16string summary;
    std::u16string spatial;
};

const std::vector<Entry> ENTRIES = {
    {u"Crossing the Grand Col Ferret", u"urn:uuid:1225c695-cfb8-4ebb-aaaa-80da344efa6a",
     u"2026-07-14T18:30:00Z", u"https://example.org/tracks?day=3&part=a",
     u"Snow above 2300 m; poles & gaiters helped.", u"Val Ferret"},
    {u"Zermatt \u2192 Gornergrat", u"urn:uuid:60a76c80-d399-11d9-b93c-0003939e0af6",
     u"2026-07-12T20:05:00Z", u"https://example.org/tracks?day=1&part=b",
     u"Visibility < 50 m on the ridge.", u"Valais"},
};

void writeLink(tarn::utils::XmlWriter& writer, const std::u16string& relation,
               const std::u16string& target)
{
    writer.writeStartElement(u"link", ATOM, NONE);
    writer.writeAttribute(u"rel", relation);
    writer.writeAttribute(u"href", target);
    writer.writeEndElement();
}

void writeEntry(tarn::utils::XmlWriter& writer, const Entry& entry)
{
    writer.writeStartElement(u"entry", ATOM, NONE);
    writer.writeElement(u"title", ATOM, entry.title);
    writer.writeElement(u"id", ATOM, entry.id);
    writer.writeElement(u"updated", ATOM, entry.updated);
    writeLink(writer, u"alternate", entry.link);
    writer.writeElement(u"summary", ATOM, entry.summary);
    writer.writeElement(u"spatial", DUBLIN_CORE, entry.spatial);
    writer.writeEndElement();
}

} // namespace

int main()
{
    tarn::utils::XmlWriter writer(std::cout);
    writer.writeStartDocument();
    writer.registerDefaultNamespace(ATOM);
    writer.writeStartElement(u"feed", ATOM, NONE);
    // Declared once here; each entry would declare it again otherwise.
    writer.writeNamespace(DUBLIN_CORE, u"dc");
    writer.writeElement(u"title", ATOM, u"Mountains & Lakes");
    writer.writeElement(u"id", ATOM, u"https://example.org/feed");
    writer.writeElement(u"updated", ATOM, ENTRIES.front().updated);
    writer.writeStartElement(u"author", ATOM, NONE);
    writer.writeElement(u"name", ATOM, u"Jos\u00E9 \u017Bak");
    writer.writeEndElement();
    writeLink(writer, u"self", u"https://example.org/feed");
    for (const Entry& entry : ENTRIES) {
        writeEntry(writer, entry);
    }
    writer.writeEndDocument();
    std::cout << '\n';
    return std::cout ? 0 : 1;
}
