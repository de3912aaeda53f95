// What a document says, without its layout: the form in which the output of the writers is compared
// with the document, so that only equal work is timed.
#pragma once

#include "benchmarks/text_forms.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace benchmarks {

/// The elements, attributes and text of a document, one after the other, names with their namespace
/// names. A document writes its outline to it as to a writer.
class Outline
{
public:
    using String = std::string;

    void startElement(const Name<String>& name) { add("\n<", name); }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& /*declared*/)
    {
        startElement(name);
    }

    void attribute(const Name<String>& name, const String& value)
    {
        add("\n@", name);
        content += '=' + value;
    }

    /// Leaves out the control characters that XML 1.0 cannot represent.
    void text(const String& value)
    {
        content += "\n=";
        for (const char character : value) {
            if (static_cast<unsigned char>(character) >= ' ') {
                content += character;
            }
        }
    }

    void endElement() { content += "\n>"; }

    void textElement(const Name<String>& name, const String& value)
    {
        startElement(name);
        text(value);
        endElement();
    }

    std::string_view finish() const { return content; }

private:
    void add(std::string_view kind, const Name<String>& name)
    {
        content.append(kind).append("{" + name.namespaceUri + "}" + name.localName);
    }

    std::string content;
};

/// Reads @p xml with an XML parser. Empty if it is not well-formed.
using OutlineReader = std::optional<std::string> (*)(std::string_view xml);

/// The reader; null when no XML parser is installed.
OutlineReader& outlineReader();

} // namespace benchmarks
