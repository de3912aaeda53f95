#include "tarn/xml/XmlWriter.hpp"

#include "tarn/xml/constants.hpp"
#include "tarn/xml/Sink.hpp"
#include "tarn/xml/XmlWriterImpl.hpp"

#include <memory>

namespace tarn::utils {

XmlWriter::XmlWriter(std::u16string& output) : impl(new Impl(std::make_unique<UStringSink>(output)))
{
}

XmlWriter::XmlWriter(std::string& output) : impl(new Impl(std::make_unique<StdStringSink>(output)))
{
}

XmlWriter::XmlWriter(std::ostream& output) : impl(new Impl(std::make_unique<StreamSink>(output))) {}

XmlWriter::~XmlWriter()
{
    delete impl;
}

void XmlWriter::writeStartDocument(const std::u16string& version)
{
    impl->writeStartDocument(version);
}

void XmlWriter::writeEndDocument()
{
    impl->writeEndDocument();
}

void XmlWriter::writeRawXml(const std::u16string& xml)
{
    impl->writeRawXml(xml);
}

void XmlWriter::writeValue(const std::u16string& value)
{
    impl->writeValue(value);
}

void XmlWriter::writeStartElement(const std::u16string& localName,
                                  const std::u16string& namespaceUri, const std::u16string& prefix)
{
    impl->writeStartElement(localName, namespaceUri, prefix);
}

void XmlWriter::writeStartElementClose()
{
    impl->writeStartElementClose();
}

void XmlWriter::writeEndElement()
{
    impl->writeEndElement();
}

void XmlWriter::writeElement(const std::u16string& localName, const std::u16string& namespaceUri,
                             const std::u16string& prefix, const std::u16string& value)
{
    impl->writeStartElement(localName, namespaceUri, prefix);
    impl->writeStartElementClose();
    impl->writeValue(value);
    impl->writeEndElement();
}

void XmlWriter::writeElement(const std::u16string& localName, const std::u16string& namespaceUri,
                             const std::u16string& value)
{
    writeElement(localName, namespaceUri, NONE, value);
}

void XmlWriter::writeElement(const std::u16string& localName, const std::u16string& value)
{
    writeElement(localName, NONE, NONE, value);
}

void XmlWriter::writeEmptyElement(const std::u16string& localName,
                                  const std::u16string& namespaceUri, const std::u16string& prefix)
{
    impl->writeStartElement(localName, namespaceUri, prefix);
    impl->writeEndElement();
}

void XmlWriter::writeStartAttribute(const std::u16string& localName,
                                    const std::u16string& namespaceUri,
                                    const std::u16string& prefix)
{
    impl->writeStartAttribute(localName, namespaceUri, prefix);
}

void XmlWriter::writeEndAttribute()
{
    impl->writeEndAttribute();
}

void XmlWriter::writeAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                               const std::u16string& prefix, const std::u16string& value)
{
    impl->writeStartAttribute(localName, namespaceUri, prefix);
    impl->writeValue(value);
    impl->writeEndAttribute();
}

void XmlWriter::writeAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                               const std::u16string& value)
{
    writeAttribute(localName, namespaceUri, NONE, value);
}

void XmlWriter::writeAttribute(const std::u16string& localName, const std::u16string& value)
{
    writeAttribute(localName, NONE, NONE, value);
}

void XmlWriter::writeNamespace(const std::u16string& namespaceUri, const std::u16string& prefix)
{
    impl->writeNamespace(namespaceUri, prefix);
}

void XmlWriter::writeDefaultNamespace(const std::u16string& namespaceUri)
{
    writeAttribute(XMLNS_PREFIX, namespaceUri);
}

void XmlWriter::registerDefaultNamespace(const std::u16string& namespaceUri)
{
    impl->registerPrefix(namespaceUri, NONE);
}

} // namespace tarn::utils
