// Calls of the writer as data: for tables, for random sequences and for failure messages.
#pragma once

#include "support/ReferenceUtf8.hpp"

#include <ostream>
#include <string>
#include <vector>

namespace tarn::tests {

/// The operations of XmlWriter; the number of arguments tells overloads apart.
enum class Operation
{
    writeStartDocument,
    writeEndDocument,
    writeRawXml,
    writeValue,
    writeStartElement,
    writeStartElementClose,
    writeEndElement,
    writeElement,
    writeEmptyElement,
    writeStartAttribute,
    writeEndAttribute,
    writeAttribute,
    writeNamespace,
    writeDefaultNamespace,
    registerDefaultNamespace,
};

struct Call
{
    Operation operation;
    std::vector<std::u16string> arguments = {};
};

using Calls = std::vector<Call>;

/// Makes @p call on any class that has the writer's operations.
template <class Writer>
void apply(const Call& call, Writer& writer)
{
    const std::vector<std::u16string>& arguments = call.arguments;
    const auto argument = [&](std::size_t index) -> const std::u16string& {
        return arguments.at(index);
    };
    switch (call.operation) {
    case Operation::writeStartDocument:
        return writer.writeStartDocument(argument(0));
    case Operation::writeEndDocument:
        return writer.writeEndDocument();
    case Operation::writeRawXml:
        return writer.writeRawXml(argument(0));
    case Operation::writeValue:
        return writer.writeValue(argument(0));
    case Operation::writeStartElement:
        return writer.writeStartElement(argument(0), argument(1), argument(2));
    case Operation::writeStartElementClose:
        return writer.writeStartElementClose();
    case Operation::writeEndElement:
        return writer.writeEndElement();
    case Operation::writeElement:
        return arguments.size() == 4
                   ? writer.writeElement(argument(0), argument(1), argument(2), argument(3))
               : arguments.size() == 3 ? writer.writeElement(argument(0), argument(1), argument(2))
                                       : writer.writeElement(argument(0), argument(1));
    case Operation::writeEmptyElement:
        return writer.writeEmptyElement(argument(0), argument(1), argument(2));
    case Operation::writeStartAttribute:
        return writer.writeStartAttribute(argument(0), argument(1), argument(2));
    case Operation::writeEndAttribute:
        return writer.writeEndAttribute();
    case Operation::writeAttribute:
        return arguments.size() == 4
                   ? writer.writeAttribute(argument(0), argument(1), argument(2), argument(3))
               : arguments.size() == 3
                   ? writer.writeAttribute(argument(0), argument(1), argument(2))
                   : writer.writeAttribute(argument(0), argument(1));
    case Operation::writeNamespace:
        return writer.writeNamespace(argument(0), argument(1));
    case Operation::writeDefaultNamespace:
        return writer.writeDefaultNamespace(argument(0));
    case Operation::registerDefaultNamespace:
        return writer.registerDefaultNamespace(argument(0));
    }
}

inline std::ostream& operator<<(std::ostream& stream, const Call& call)
{
    static constexpr const char* NAMES[] = {
        "writeStartDocument",  "writeEndDocument",      "writeRawXml",
        "writeValue",          "writeStartElement",     "writeStartElementClose",
        "writeEndElement",     "writeElement",          "writeEmptyElement",
        "writeStartAttribute", "writeEndAttribute",     "writeAttribute",
        "writeNamespace",      "writeDefaultNamespace", "registerDefaultNamespace",
    };
    stream << NAMES[static_cast<int>(call.operation)] << '(';
    for (const std::u16string& argument : call.arguments) {
        stream << (&argument == call.arguments.data() ? "" : ", ") << '"';
        if (argument.size() <= 100) {
            stream << referenceUtf8(argument);
        } else {
            stream << referenceUtf8(argument.substr(0, 40)) << "... (" << argument.size()
                   << " units)";
        }
        stream << '"';
    }
    return stream << ')';
}

inline std::ostream& operator<<(std::ostream& stream, const Calls& calls)
{
    for (const Call& call : calls) {
        stream << "  " << call << '\n';
    }
    return stream;
}

// One function for each operation, so that a table of calls reads like the calls themselves.

inline Call startDocument(std::u16string version = u"1.0")
{
    return {Operation::writeStartDocument, {std::move(version)}};
}
inline Call endDocument()
{
    return {Operation::writeEndDocument};
}
inline Call rawXml(std::u16string xml)
{
    return {Operation::writeRawXml, {std::move(xml)}};
}
inline Call value(std::u16string text)
{
    return {Operation::writeValue, {std::move(text)}};
}
inline Call startElement(std::u16string name, std::u16string uri = u"", std::u16string prefix = u"")
{
    return {Operation::writeStartElement, {std::move(name), std::move(uri), std::move(prefix)}};
}
inline Call startElementClose()
{
    return {Operation::writeStartElementClose};
}
inline Call endElement()
{
    return {Operation::writeEndElement};
}
template <class... Arguments>
Call element(Arguments... arguments)
{
    return {Operation::writeElement, {arguments...}};
}
inline Call emptyElement(std::u16string name, std::u16string uri = u"", std::u16string prefix = u"")
{
    return {Operation::writeEmptyElement, {std::move(name), std::move(uri), std::move(prefix)}};
}
inline Call startAttribute(std::u16string name, std::u16string uri = u"",
                           std::u16string prefix = u"")
{
    return {Operation::writeStartAttribute, {std::move(name), std::move(uri), std::move(prefix)}};
}
inline Call endAttribute()
{
    return {Operation::writeEndAttribute};
}
template <class... Arguments>
Call attribute(Arguments... arguments)
{
    return {Operation::writeAttribute, {arguments...}};
}
inline Call namespaceDeclaration(std::u16string uri, std::u16string prefix)
{
    return {Operation::writeNamespace, {std::move(uri), std::move(prefix)}};
}
inline Call defaultNamespace(std::u16string uri)
{
    return {Operation::writeDefaultNamespace, {std::move(uri)}};
}
inline Call registerDefault(std::u16string uri)
{
    return {Operation::registerDefaultNamespace, {std::move(uri)}};
}

} // namespace tarn::tests
