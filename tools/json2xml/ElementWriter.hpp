// ElementWriter: the elements of the XML representation, laid out or on one line.
#pragma once

#include <iosfwd>
#include <string>
#include <tarn/xml/XmlWriter.hpp>

namespace json2xml {

/// The XmlWriter always begins a line with a start tag, so compact tags are written as raw text.
class ElementWriter
{
public:
    /// Writes the XML declaration.
    ElementWriter(std::ostream& output, bool isCompact);

    /// Writes a start tag without its end, so that attributes can follow.
    void startElement(const std::u16string& name);

    /// The calls of writeValue() and writeRawXml() up to endAttribute() write the value.
    void startAttribute(const std::u16string& name);
    void endAttribute();

    /// Ends the start tag, if text follows.
    void startText();

    void writeValue(const std::u16string& text) { writer.writeValue(text); }
    void writeRawXml(const std::u16string& xml) { writer.writeRawXml(xml); }

    /// @param name the name of the element that is open.
    void endElement(const std::u16string& name);

    /// Ends the document with a line feed and pushes all text to the output.
    void finish();

private:
    void write(std::initializer_list<std::u16string_view> pieces);

    tarn::utils::XmlWriter writer;
    const bool isCompact;

    /// Only used if the layout is compact.
    bool isRoot = true;
    bool isStartTagOpen = false;
    std::u16string tag;
};

} // namespace json2xml
