// Calls of the writer as data: for tables, for random sequences and for failure messages.
#pragma once

#include "support/ReferenceUtf8.hpp"

#include <algorithm>
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

/// Makes calls of an operation, so that a table of calls reads like the calls themselves.
struct CallOf
{
    Operation operation;
    std::size_t fewestArguments;

    /// Arguments that are left out are empty.
    template <class... Arguments>
    Call operator()(const Arguments&... arguments) const
    {
        Call call{operation, {arguments...}};
        call.arguments.resize(std::max(sizeof...(arguments), fewestArguments));
        return call;
    }
};

inline constexpr CallOf startDocument{Operation::writeStartDocument, 1};
inline constexpr CallOf endDocument{Operation::writeEndDocument, 0};
inline constexpr CallOf rawXml{Operation::writeRawXml, 1};
inline constexpr CallOf value{Operation::writeValue, 1};
inline constexpr CallOf startElement{Operation::writeStartElement, 3};
inline constexpr CallOf startElementClose{Operation::writeStartElementClose, 0};
inline constexpr CallOf endElement{Operation::writeEndElement, 0};
inline constexpr CallOf element{Operation::writeElement, 2};
inline constexpr CallOf emptyElement{Operation::writeEmptyElement, 3};
inline constexpr CallOf startAttribute{Operation::writeStartAttribute, 3};
inline constexpr CallOf endAttribute{Operation::writeEndAttribute, 0};
inline constexpr CallOf attribute{Operation::writeAttribute, 2};
inline constexpr CallOf namespaceDeclaration{Operation::writeNamespace, 2};
inline constexpr CallOf defaultNamespace{Operation::writeDefaultNamespace, 1};
inline constexpr CallOf registerDefault{Operation::registerDefaultNamespace, 1};

} // namespace tarn::tests
