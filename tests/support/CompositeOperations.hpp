// The operations of XmlWriter that are fixed sequences of others.
#pragma once

#include <string>

namespace tarn::tests {

/// The arguments of an element or an attribute with a value; those left out are empty.
struct NameAndValue
{
    using Text = std::u16string;

    NameAndValue(const Text& name, const Text& uri, const Text& prefix, const Text& value)
        : name(name), uri(uri), prefix(prefix), value(value)
    {
    }
    NameAndValue(const Text& name, const Text& uri, const Text& value)
        : NameAndValue(name, uri, u"", value)
    {
    }
    NameAndValue(const Text& name, const Text& value) : NameAndValue(name, u"", u"", value) {}

    Text name, uri, prefix, value;
};

/// Adds them to a class that has the others.
template <class Basic>
class CompositeOperations : public Basic
{
public:
    using Basic::Basic;
    using Text = std::u16string;

    void writeElement(const auto&... arguments)
    {
        const NameAndValue element(arguments...);
        this->writeStartElement(element.name, element.uri, element.prefix);
        this->writeStartElementClose();
        this->writeValue(element.value);
        this->writeEndElement();
    }
    void writeEmptyElement(const Text& localName, const Text& uri, const Text& prefix)
    {
        this->writeStartElement(localName, uri, prefix);
        this->writeEndElement();
    }
    void writeAttribute(const auto&... arguments)
    {
        const NameAndValue attribute(arguments...);
        this->writeStartAttribute(attribute.name, attribute.uri, attribute.prefix);
        this->writeValue(attribute.value);
        this->writeEndAttribute();
    }
    void writeDefaultNamespace(const Text& uri) { writeAttribute(u"xmlns", uri); }
    void registerDefaultNamespace(const Text& uri) { this->registerPrefix(uri, u""); }
};

} // namespace tarn::tests
