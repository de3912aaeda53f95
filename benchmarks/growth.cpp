// Usage: benchmark-growth
//        benchmark-growth OPERATION SIZE
//        benchmark-growth --bundles PATH...
// The first lists the operations. The second does OPERATION on SIZE of what could slow it down. The
// third installs the bundles at each PATH. scripts/growth counts the instructions.
#include "tarn/document/Document.hpp"
#include "tarn/services/BundleContainer.hpp"
#include "tarn/utils/num_to_string.hpp"
#include "tarn/xml/XmlWriter.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <deque>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using tarn::document::Document;
using tarn::document::Element;
using tarn::document::Layout;
using tarn::document::Name;
using tarn::document::Namespace;
using tarn::utils::num_to_string;
using tarn::utils::XmlWriter;

const std::u16string NONE;
const std::u16string ELEMENT = u"element";
const std::u16string PREFIX = u"p";
const std::u16string VALUE = u"value";

/// All numbers have the same length.
constexpr std::size_t FIRST_NUMBER = 100'000;

std::vector<std::u16string> numbered(const std::u16string& start, std::size_t count)
{
    std::vector<std::u16string> names;
    for (std::size_t number = FIRST_NUMBER; number < FIRST_NUMBER + count; ++number) {
        names.push_back(start + num_to_string(number));
    }
    return names;
}

std::vector<std::string> numbered(const std::string& start, std::size_t count)
{
    std::vector<std::string> names;
    for (std::size_t number = FIRST_NUMBER; number < FIRST_NUMBER + count; ++number) {
        names.push_back(start + std::to_string(number));
    }
    return names;
}

std::vector<std::u16string> namespaces(std::size_t count)
{
    return numbered(u"http://schemas.example.org/2024/", count);
}

std::vector<std::string> namespacesInUtf8(std::size_t count)
{
    return numbered("http://schemas.example.org/2024/", count);
}

/// @p count characters, each of which is one of @p specials.
template <class String>
String repeated(std::string_view specials, std::size_t count)
{
    String text;
    for (std::size_t number = 0; number < count; ++number) {
        text += specials[number % specials.size()];
    }
    return text;
}

// The writer. Names are written from copies, since the writer remembers where a name stood.

void writerBindings(std::size_t count)
{
    const std::vector<std::u16string> uris = namespaces(count);
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartElement(ELEMENT, NONE, NONE);
    for (const std::u16string& uri : uris) {
        writer.writeNamespace(uri, PREFIX);
    }
    for (const std::u16string& uri : uris) {
        writer.writeElement(ELEMENT, std::u16string(uri), NONE);
    }
    writer.writeEndDocument();
}

void writerRegistrations(std::size_t count)
{
    std::string xml;
    XmlWriter writer(xml);
    for (const std::u16string& uri : namespaces(count)) {
        writer.registerDefaultNamespace(uri);
        writer.registerDefaultNamespace(uri); // is bound, and queued again
    }
    writer.writeEmptyElement(ELEMENT, NONE, NONE);
    writer.writeEndDocument();
}

void writerAttributes(std::size_t count)
{
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartElement(ELEMENT, NONE, NONE);
    for (const std::u16string& name : numbered(u"name", count)) {
        writer.writeAttribute(name, VALUE);
    }
    writer.writeEndDocument();
}

void writerAttributesInNewNamespaces(std::size_t count)
{
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartElement(ELEMENT, NONE, NONE);
    for (const std::u16string& uri : namespaces(count)) {
        writer.writeAttribute(ELEMENT, uri, PREFIX, VALUE);
    }
    writer.writeEndDocument();
}

/// Over a target whose text is not converted, so that the cost of the indentation, which grows with
/// the square of the depth, is small.
void writerDepth(std::size_t count)
{
    std::u16string xml;
    XmlWriter writer(xml);
    for (std::size_t level = 0; level < count; ++level) {
        writer.writeStartElement(ELEMENT, NONE, NONE);
    }
    writer.writeEndDocument();
}

void writerSiblings(std::size_t count)
{
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartElement(ELEMENT, NONE, NONE);
    for (const std::u16string& uri : namespaces(count)) {
        writer.writeStartElement(ELEMENT, uri, PREFIX);
        writer.writeStartElement(ELEMENT, uri + u"/inside", PREFIX);
        writer.writeEndElement();
        writer.writeEndElement();
    }
    writer.writeEndDocument();
}

template <class Target>
void writerSpecials(std::size_t count)
{
    Target xml;
    XmlWriter writer(xml);
    writer.writeElement(ELEMENT, repeated<std::u16string>("<>&\"'\x01", count));
    writer.writeEndDocument();
}

template <class Target>
void writerPieces(std::size_t count)
{
    Target xml;
    XmlWriter writer(xml);
    writer.writeStartElement(ELEMENT, NONE, NONE);
    for (std::size_t piece = 0; piece < count; ++piece) {
        writer.writeValue(VALUE);
    }
    writer.writeEndDocument();
}

// The document layer.

void documentBindings(std::size_t count)
{
    const std::vector<std::string> uris = namespacesInUtf8(count);
    std::string xml;
    Document document(xml);
    Element root = document.root("element");
    for (const std::string& uri : uris) {
        root.declare(Namespace(uri, "p"));
    }
    for (const std::string& uri : uris) {
        root.add(Name(Namespace(std::string(uri), "p"), "element"), "");
    }
    document.finish();
}

void documentAttributes(std::size_t count)
{
    std::string xml;
    Document document(xml);
    Element root = document.root("element");
    for (const std::string& name : numbered("name", count)) {
        root.attribute(name, "value");
    }
    document.finish();
}

void documentDepth(std::size_t count)
{
    std::string xml;
    Document document(xml, {.layout = Layout::none});
    std::deque<Element> open;
    open.push_back(document.root("element"));
    while (open.size() < count) {
        open.push_back(open.back().child("element"));
    }
    while (!open.empty()) {
        open.pop_back();
    }
    document.finish();
}

void documentSiblings(std::size_t count)
{
    std::string xml;
    Document document(xml);
    Element root = document.root("element");
    for (const std::string& uri : namespacesInUtf8(count)) {
        root.child(Name(Namespace(uri, "p"), "element"));
    }
    document.finish();
}

void documentSpecials(std::size_t count)
{
    const auto text = repeated<std::string>("<>&\"'\t\n\r", count);
    const auto ends = repeated<std::string>("]]>", count); // of CDATA sections
    std::string xml;
    Document document(xml);
    document.root("element").attribute("name", text).text(text).cdata(ends);
    document.finish();
}

struct Operation
{
    std::string_view name;
    void (*perform)(std::size_t size);
};

constexpr Operation OPERATIONS[] = {
    {"writer-bindings", writerBindings},
    {"writer-registrations", writerRegistrations},
    {"writer-attributes", writerAttributes},
    {"writer-attributes-in-new-namespaces", writerAttributesInNewNamespaces},
    {"writer-depth", writerDepth},
    {"writer-siblings-in-new-namespaces", writerSiblings},
    {"writer-specials", writerSpecials<std::string>},
    {"writer-specials-to-u16string", writerSpecials<std::u16string>},
    {"writer-pieces-of-a-value", writerPieces<std::string>},
    {"writer-pieces-to-u16string", writerPieces<std::u16string>},
    {"document-bindings", documentBindings},
    {"document-attributes", documentAttributes},
    {"document-depth", documentDepth},
    {"document-siblings-in-new-namespaces", documentSiblings},
    {"document-specials", documentSpecials},
};

void installBundles(const std::vector<std::string>& paths)
{
    using tarn::utils::services::BundleContainer;
    std::vector<std::unique_ptr<BundleContainer>> containers;
    containers.reserve(paths.size());
    for (const std::string& path : paths) {
        containers.push_back(
            std::make_unique<BundleContainer>(std::filesystem::path(path).u16string()));
    }
}

int run(const std::vector<std::string>& arguments)
{
    if (arguments.empty()) {
        for (const Operation& operation : OPERATIONS) {
            std::cout << operation.name << '\n';
        }
        return 0;
    }
    if (arguments.front() == "--bundles") {
        installBundles({arguments.begin() + 1, arguments.end()});
        return 0;
    }
    const auto* const operation =
        std::ranges::find(OPERATIONS, arguments.front(), &Operation::name);
    std::size_t size = 0;
    const char* const end = arguments.back().data() + arguments.back().size();
    const auto [parsed, error] = std::from_chars(arguments.back().data(), end, size);
    if (arguments.size() != 2 || operation == std::end(OPERATIONS) || error != std::errc() ||
        parsed != end) {
        std::cerr << "Usage: benchmark-growth [OPERATION SIZE | --bundles PATH...]\n";
        return 2;
    }
    operation->perform(size);
    return 0;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try {
        return run({arguments + 1, arguments + argumentCount});
    } catch (const std::exception& exception) {
        std::cerr << "benchmark-growth: " << exception.what() << '\n';
        return 1;
    }
}
