// The writer over a sink of the test's own.
#pragma once

#include <tarn/xml/XmlWriterImpl.hpp>

#include <memory>
#include <string>

namespace tarn::tests {

/// The implementation class with the composite operations that the public class adds to it.
class SinkWriter : public utils::XmlWriter::Impl
{
public:
    using Text = std::u16string;

    explicit SinkWriter(std::unique_ptr<utils::Sink> sink) : Impl(std::move(sink)) {}

    void writeElement(const Text& localName, const Text& uri, const Text& prefix, const Text& value)
    {
        writeStartElement(localName, uri, prefix);
        writeStartElementClose();
        writeValue(value);
        writeEndElement();
    }
    void writeElement(const Text& localName, const Text& uri, const Text& value)
    {
        writeElement(localName, uri, u"", value);
    }
    void writeElement(const Text& localName, const Text& value)
    {
        writeElement(localName, u"", u"", value);
    }
    void writeEmptyElement(const Text& localName, const Text& uri, const Text& prefix)
    {
        writeStartElement(localName, uri, prefix);
        writeEndElement();
    }
    void writeAttribute(const Text& localName, const Text& uri, const Text& prefix,
                        const Text& value)
    {
        writeStartAttribute(localName, uri, prefix);
        writeValue(value);
        writeEndAttribute();
    }
    void writeAttribute(const Text& localName, const Text& uri, const Text& value)
    {
        writeAttribute(localName, uri, u"", value);
    }
    void writeAttribute(const Text& localName, const Text& value)
    {
        writeAttribute(localName, u"", u"", value);
    }
    void writeDefaultNamespace(const Text& uri) { writeAttribute(u"xmlns", uri); }
    void registerDefaultNamespace(const Text& uri) { registerPrefix(uri, u""); }
};

} // namespace tarn::tests
