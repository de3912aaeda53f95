// Elements in the namespaces of two office formats, in random order, and the same elements in one
// namespace.
#pragma once

#include "benchmarks/documents/TextSource.hpp"
#include "benchmarks/text_forms.hpp"

#include <vector>

namespace benchmarks {

/// @p COUNT namespaces are declared on the root, and each element is in one of them.
template <class String, std::size_t COUNT>
class OfficeElements
{
public:
    static constexpr int COPIES = 1;

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(root, namespaces);
        for (const Element& element : elements) {
            writer.textElement(names[element.space], element.text);
        }
        writer.endElement();
    }

protected:
    OfficeElements()
    {
        for (const Namespace<String>& space : namespaces) {
            names.emplace_back(space, u"item");
        }
        TextSource source(ENGLISH);
        for (std::size_t number = 0; number < 5000; ++number) {
            elements.push_back(
                {source.number(0, namespaces.size() - 1), convert<String>(source.words(1))});
        }
    }

private:
    struct Element
    {
        std::size_t space;
        String text;
    };

    /// Twenty of OpenDocument, then twenty of Office Open XML. The names of each format begin
    /// alike, and those of the first also end alike.
    static std::vector<Namespace<String>> firstNamespaces()
    {
        const std::u16string openDocument = u"urn:oasis:names:tc:opendocument:xmlns:";
        const std::u16string openXml = u"http://schemas.openxmlformats.org/";
        std::vector<Namespace<String>> all;
        std::size_t number = 10; // so that all prefixes have one length
        const auto add = [&](const std::u16string& name) {
            all.emplace_back(name, numbered(u"p", number++));
        };
        for (const char16_t* name : {u"office",         u"style",
                                     u"text",           u"table",
                                     u"drawing",        u"xsl-fo-compatible",
                                     u"svg-compatible", u"smil-compatible",
                                     u"meta",           u"datastyle",
                                     u"chart",          u"dr3d",
                                     u"form",           u"script",
                                     u"config",         u"presentation",
                                     u"animation",      u"manifest",
                                     u"database",       u"of"}) {
            add(openDocument + name + u":1.0");
        }
        for (const char16_t* name : {u"wordprocessingml/2006/main",
                                     u"spreadsheetml/2006/main",
                                     u"presentationml/2006/main",
                                     u"drawingml/2006/main",
                                     u"drawingml/2006/chart",
                                     u"drawingml/2006/diagram",
                                     u"drawingml/2006/picture",
                                     u"drawingml/2006/chartDrawing",
                                     u"drawingml/2006/lockedCanvas",
                                     u"drawingml/2006/spreadsheetDrawing",
                                     u"drawingml/2006/wordprocessingDrawing",
                                     u"officeDocument/2006/math",
                                     u"officeDocument/2006/relationships",
                                     u"officeDocument/2006/bibliography",
                                     u"officeDocument/2006/customXml",
                                     u"officeDocument/2006/custom-properties",
                                     u"officeDocument/2006/docPropsVTypes",
                                     u"officeDocument/2006/extended-properties",
                                     u"package/2006/relationships",
                                     u"package/2006/content-types"}) {
            add(openXml + name);
        }
        all.erase(all.begin() + static_cast<std::ptrdiff_t>(COUNT), all.end());
        return all;
    }

    std::vector<Namespace<String>> namespaces = firstNamespaces();
    Name<String> root{u"document"};
    std::vector<Name<String>> names;
    std::vector<Element> elements;
};

template <class String>
struct Office : OfficeElements<String, 40>
{
    static constexpr const char* NAME = "office";
};

/// What an element costs when its namespace is always that of the element before.
template <class String>
struct OneNamespace : OfficeElements<String, 1>
{
    static constexpr const char* NAME = "one-namespace";
};

} // namespace benchmarks
