// The operations of XmlWriter that are fixed sequences of others.
#pragma once

#include <string>

namespace tarn::tests {

/// Adds them to a class that has the others.
template <class Basic>
class Composed : public Basic
{
public:
    using Text = std::u16string;
    using Basic::Basic;

    void writeElement(const Text& localName, const Text& uri, const Text& prefix, const Text& value)
    {
        this->writeStartElement(localName, uri, prefix);
        this->writeStartElementClose();
        this->writeValue(value);
        this->writeEndElement();
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
        this->writeStartElement(localName, uri, prefix);
        this->writeEndElement();
    }
    void writeAttribute(const Text& localName, const Text& uri, const Text& prefix,
                        const Text& value)
    {
        this->writeStartAttribute(localName, uri, prefix);
        this->writeValue(value);
        this->writeEndAttribute();
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
    void registerDefaultNamespace(const Text& uri) { this->registerPrefix(uri, u""); }
};

} // namespace tarn::tests
