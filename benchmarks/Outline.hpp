// What a document says, without its layout. The output of each writer is compared in this form with
// the document, so that only equal work is timed.
#pragma once

#include "benchmarks/text_forms.hpp"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace benchmarks {

/// Makes of a document, which writes to it as to a writer, the outline that
/// tarn::tests::outlineOfXml() makes of its XML, without text beside elements.
class Outline
{
public:
    using String = std::string;

    void startElement(const Name<String>& name)
    {
        endStartTag();
        content += '<' + expanded(name);
        isInStartTag = true;
    }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& /*declared*/)
    {
        startElement(name);
    }

    void attribute(const Name<String>& name, const String& value)
    {
        content += ' ' + expanded(name) + "=\"" + value + '"';
    }

    /// Leaves out the control characters that XML 1.0 cannot represent.
    void text(const String& value)
    {
        endStartTag();
        std::ranges::copy_if(value, std::back_inserter(content), [](char character) {
            return static_cast<unsigned char>(character) >= ' ';
        });
    }

    void endElement()
    {
        endStartTag();
        content += "</>";
    }

    void textElement(const Name<String>& name, const String& value)
    {
        startElement(name);
        text(value);
        endElement();
    }

    std::string_view finish() const { return content; }

private:
    static std::string expanded(const Name<String>& name)
    {
        return '{' + name.namespaceUri + '}' + name.localName;
    }

    void endStartTag()
    {
        if (isInStartTag) {
            content += '>';
            isInStartTag = false;
        }
    }

    std::string content;
    bool isInStartTag = false;
};

/// Reads @p xml with an XML parser. If it is not well-formed, the result does not begin with `<`.
using OutlineReader = std::string (*)(const std::string& xml);

/// The reader; null if no XML parser is installed.
OutlineReader& outlineReader();

} // namespace benchmarks
