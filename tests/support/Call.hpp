// Calls of the writer as data: for tables, for random sequences and for failure messages.
#pragma once

#include "support/reference_utf8.hpp"

#include <ostream>
#include <string>
#include <string_view>
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

/// Makes @p call on any class that has the writer's operations, with the arguments that the
/// function @p argument gives by their index.
void applyWith(const Call& call, auto& writer, const auto& argument)
{
    const std::vector<std::u16string>& arguments = call.arguments;
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

/// Makes @p call on any class that has the writer's operations.
void apply(const Call& call, auto& writer)
{
    applyWith(call, writer,
              [&](std::size_t index) -> const std::u16string& { return call.arguments.at(index); });
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
    /// A letter for each argument: local Name, namespace Uri, Prefix, Text, Version.
    std::string_view kinds;

    /// Whether the namespace name and the prefix can be left out of the call.
    constexpr bool hasOverloads() const { return kinds == "NUPT"; }

    /// Arguments that are left out are empty, unless there is an overload without them.
    template <class... Arguments>
    Call operator()(const Arguments&... arguments) const
    {
        Call call{operation, {arguments...}};
        if (!hasOverloads()) {
            call.arguments.resize(kinds.size());
        }
        return call;
    }
};

inline constexpr CallOf startDocument{Operation::writeStartDocument, "V"};
inline constexpr CallOf endDocument{Operation::writeEndDocument, ""};
inline constexpr CallOf rawXml{Operation::writeRawXml, "T"};
inline constexpr CallOf value{Operation::writeValue, "T"};
inline constexpr CallOf startElement{Operation::writeStartElement, "NUP"};
inline constexpr CallOf startElementClose{Operation::writeStartElementClose, ""};
inline constexpr CallOf endElement{Operation::writeEndElement, ""};
inline constexpr CallOf element{Operation::writeElement, "NUPT"};
inline constexpr CallOf emptyElement{Operation::writeEmptyElement, "NUP"};
inline constexpr CallOf startAttribute{Operation::writeStartAttribute, "NUP"};
inline constexpr CallOf endAttribute{Operation::writeEndAttribute, ""};
inline constexpr CallOf attribute{Operation::writeAttribute, "NUPT"};
inline constexpr CallOf namespaceDeclaration{Operation::writeNamespace, "UP"};
inline constexpr CallOf defaultNamespace{Operation::writeDefaultNamespace, "U"};
inline constexpr CallOf registerDefault{Operation::registerDefaultNamespace, "U"};

} // namespace tarn::tests
