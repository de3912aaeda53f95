// The snippets of docs/guide.md and README.md about the document layer, and what each of them
// writes.
#include <tarn/document/Document.hpp>
#include <tarn/xml/XmlWriter.hpp>

#include <chrono>
#include <iostream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace tarn::document;

std::string firstScreenChecked()
{
    // [snippet: first-screen-checked]
    using namespace tarn::document;
    constexpr Namespace ATOM{"http://www.w3.org/2005/Atom", "atom"};
    constexpr Namespace TERMS{"http://purl.org/dc/terms/", "dc"};

    std::string xml;
    Document document(xml);
    Element feed = document.root(Name(ATOM, "feed")).declare(TERMS);
    feed.add(Name(ATOM, "title"), "Mountains & Lakes");
    feed.child(Name(ATOM, "entry")).attribute(Name(TERMS, "date"), "2024-05-01").text("a < b");
    document.finish();
    // [end]
    return xml;
}

std::string firstScreenExact()
{
    // [snippet: first-screen-exact]
    const std::u16string ATOM = u"http://www.w3.org/2005/Atom";
    const std::u16string TERMS = u"http://purl.org/dc/terms/";

    std::string xml;
    tarn::utils::XmlWriter writer(xml);
    writer.writeStartDocument();
    writer.writeStartElement(u"feed", ATOM, u"atom");
    writer.writeNamespace(TERMS, u"dc");
    writer.writeElement(u"title", ATOM, u"Mountains & Lakes");
    writer.writeStartElement(u"entry", ATOM, u"");
    writer.writeAttribute(u"date", TERMS, u"2024-05-01");
    writer.writeValue(u"a < b");
    writer.writeEndDocument();
    // [end]
    return xml;
}

/// README.md says that both ways give the same text.
std::string firstScreen()
{
    const std::string xml = firstScreenChecked();
    return xml == firstScreenExact() ? xml : "The two ways give different texts.";
}

// [snippet: document-constants]
constexpr Namespace ATOM{"http://www.w3.org/2005/Atom"};
constexpr Namespace TERMS{"http://purl.org/dc/terms/", "dc"};
constexpr Name FEED{ATOM, "feed"}, ENTRY{ATOM, "entry"}, TITLE{ATOM, "title"};
constexpr Name DATE{TERMS, "date"}, SPATIAL{TERMS, "spatial"};
// [end]

struct Track
{
    std::string day;
    std::string summary;
};

std::string checkedDocument()
{
    const std::vector<Track> tracks = {{"2026-07-14", "Snow above 2300 m; poles & gaiters helped."},
                                       {"2026-07-12", "Visibility < 50 m."}};
    // [snippet: checked-document]
    std::string xml;
    Document document(xml);
    Element feed = document.root(FEED);
    feed.add(TITLE, "Mountains & Lakes");
    for (const Track& track : tracks) {
        Element entry = feed.child(ENTRY);
        entry.attribute(DATE, track.day).text(track.summary);
    }
    document.finish();
    // [end]
    return xml;
}

std::string documentNames()
{
    std::ostringstream report;
    std::string xml;
    Document document(xml, {.declaration = false});
    // [snippet: document-names]
    Element lakes = document.root("lakes");
    for (const std::string_view key : {"name", "1st island", "depth"}) {
        try {
            lakes.add(key, 7);
        } catch (const Error& error) {
            report << error.what() << '\n';
        }
    }
    document.finish();
    // [end]
    return report.str() + xml;
}

void documentNamespaces(Document& document)
{
    // [snippet: document-namespaces]
    constexpr Namespace XHTML{"http://www.w3.org/1999/xhtml"};
    Element feed = document.root(FEED).declare(TERMS);
    Element entry = feed.child(ENTRY).attribute(Name(XML, "lang"), "en");
    entry.add(SPATIAL, "Valais");
    entry.child(Name(XHTML, "p")).text("Two ").add(Name(XHTML, "em"), "lakes");
    entry.add("note", "in no namespace");
    feed.add(SPATIAL, "Savoie");
    // [end]
}

void documentPrefixes(Document& document)
{
    // [snippet: document-prefixes]
    constexpr Namespace OTHER{"urn:other", "dc"};
    Element places = document.root("places").declare(TERMS);
    places.add(SPATIAL, "Valais").add(Name(OTHER, "spatial"), "dc is in use");
    // [end]
}

void documentValues(Document& document)
{
    Element root = document.root("values");
    // [snippet: document-values]
    const std::string_view part = std::string_view("Lac d'Annecy").substr(0, 3);
    root.add("text", "Großglockner").add("text", u"Großglockner").add("text", part);
    root.add("integer", -7).add("integer", 18446744073709551615U).add("boolean", true);
    root.add("number", 0.1).add("number", 1e300).add("number", 0.1F);
    root.add("number", -std::numeric_limits<double>::infinity());
    root.add("time", std::chrono::sys_days(2026y / 11 / 25) + 18h + 2500ms);
    // [end]
}

void documentAttributes(Document& document)
{
    Element root = document.root("verses");
    // [snippet: document-attributes]
    root.child("verse")
        .attribute("id", 7)
        .attribute("lines", "one\ntwo")
        .text("a\r\nb\t")
        .text("c");
    // [end]
}

void documentLayout(Document& document)
{
    Element root = document.root("article");
    // [snippet: document-layout]
    root.add("title", "Peaks");
    Element paragraph = root.child("p");
    paragraph.text("A ").add("b", "very").text(" high ");
    paragraph.child("a").attribute("href", "#top").child("img");
    root.child("hr");
    // [end]
}

std::string documentCompact()
{
    // [snippet: document-compact]
    std::string xml;
    Options options;
    options.layout = Layout::none;
    options.declaration = false;
    Document document(xml, options);
    document.root("lake").add("name", "Annecy").add("depth", 81.8);
    document.finish();
    // [end]
    return xml;
}

void documentMarkup(Document& document)
{
    // [snippet: document-markup]
    document.instruction("xml-stylesheet", "href=\"peaks.css\"");
    document.doctype("peaks", "", "peaks.dtd");
    Element peaks = document.root("peaks");
    peaks.comment(" the highest first ");
    peaks.child("script").cdata("if (a < b && c) { d[e[0]]>f; }");
    Element picture = peaks.child("picture");
    picture.base64("\x89PNG", 4);
    picture.base64("\r\n\x1A\n", 4);
    // [end]
}

void documentFragments(Document& document)
{
    // [snippet: document-fragments]
    const Fragment unit = Fragment::of(" m < 5000 m");
    const Fragment note = Fragment::trusted("<b>Measured</b> again in 2023");
    Element peaks = document.root("peaks");
    for (const int metres : {4806, 4634}) {
        peaks.child("height").text(metres).raw(unit);
    }
    peaks.child("note").raw(note);
    // [end]
}

std::string documentFlush()
{
    std::ostringstream report;
    // [snippet: document-flush]
    std::string arrived;
    Document document([&](std::string_view bytes) { arrived += bytes; });
    {
        Element log = document.root("log");
        log.add("event", "started");
        report << "added: " << arrived.size() << " bytes\n";
        document.flush();
        report << "flushed: " << arrived << '\n';
    }
    document.flush();
    report << "the root has ended: " << arrived.ends_with("</log>") << '\n';
    document.finish();
    report << "finished: " << arrived.ends_with("</log>") << '\n';
    // [end]
    std::string text = std::move(report).str();
    text.pop_back();
    return text;
}

std::string documentReset()
{
    std::string report;
    // [snippet: document-reset]
    std::string xml;
    Document document(xml, {.layout = Layout::none, .declaration = false});
    for (const char* const name : {"Annecy", "Bourget"}) {
        document.root("lake").add("name", name);
        document.finish();
        report += xml + '\n'; // All of it is there, and reset() empties the string.
        document.reset();
    }
    // [end]
    report.pop_back();
    return report;
}

std::string documentException()
{
    // [snippet: document-exception]
    std::string xml;
    Document document(xml, {.declaration = false});
    try {
        Element feed = document.root(FEED);
        feed.add(TITLE, "Mountains & Lakes");
        Element entry = feed.child(ENTRY);
        entry.text("Snow above");
        throw std::runtime_error("no more tracks");
    } catch (const std::runtime_error&) {
        document.flush();
    }
    // [end]
    return xml;
}

/// What @p snippet writes below the XML declaration.
std::string body(void (*snippet)(Document&))
{
    std::string xml;
    Document document(xml);
    snippet(document);
    document.finish();
    return xml.substr(xml.find('\n') + 1);
}

void print(const char* name, const std::string& text)
{
    std::cout << "== " << name << '\n' << text << '\n';
}

} // namespace

int main()
{
    print("first-screen", firstScreen());
    print("checked-document", checkedDocument());
    print("document-names", documentNames());
    print("document-namespaces", body(documentNamespaces));
    print("document-prefixes", body(documentPrefixes));
    print("document-values", body(documentValues));
    print("document-attributes", body(documentAttributes));
    print("document-layout", body(documentLayout));
    print("document-compact", documentCompact());
    print("document-markup", body(documentMarkup));
    print("document-fragments", body(documentFragments));
    print("document-flush", documentFlush());
    print("document-reset", documentReset());
    print("document-exception", documentException());
    return std::cout ? 0 : 1;
}
