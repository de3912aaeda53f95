// Calls of the writer as data: for tables, for random sequences and for failure messages.
#pragma once

#include "support/RecordingSink.hpp"
#include "support/reference_utf8.hpp"
#include "support/ReferenceWriter.hpp"
#include "support/SuccessesLeft.hpp"

#include <tarn/xml/XmlWriter.hpp>

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tarn::tests {

/// What calls are made on: the writer, its implementation over a recording sink, or its model.
using AnyWriter = std::variant<utils::XmlWriter*, RecordedWriter*, ReferenceWriter*>;

/// The arguments of a call; those behind the last one are null.
using Arguments = std::array<const std::u16string*, 4>;

class Operation;

struct Call
{
    const Operation* operation;
    std::vector<std::u16string> arguments = {};

    /// Makes the call with these arguments.
    void applyTo(AnyWriter writer) const;
    /// The same on a writer that may have been made to fail.
    /// @returns whether it failed.
    bool failsOn(AnyWriter writer) const;
};

using Calls = std::vector<Call>;

/// An operation of XmlWriter with all its overloads.
class Operation
{
public:
    using Apply = void (*)(AnyWriter, const Arguments&);

    Operation(const char* name, std::string_view kinds, Apply apply)
        : name(name), kinds(kinds), apply(apply)
    {
        listed().push_back(this);
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    /// All operations, in the order of their definitions.
    static const std::vector<const Operation*>& all() { return listed(); }

    /// Whether the namespace name and the prefix can be left out of the call.
    bool hasOverloads() const { return kinds == "NUPT"; }

    /// A call of this operation, so that a table of calls reads like the calls themselves.
    /// Arguments that are left out are empty, unless there is an overload without them.
    template <class... Given>
    Call operator()(const Given&... given) const
    {
        Call call{this, {given...}};
        if (!hasOverloads()) {
            call.arguments.resize(kinds.size());
        }
        return call;
    }

    const char* const name;
    /// A letter for each argument: local Name, namespace Uri, Prefix, Text, Version.
    const std::string_view kinds;
    const Apply apply;

private:
    static std::vector<const Operation*>& listed()
    {
        static std::vector<const Operation*> operations;
        return operations;
    }
};

namespace detail {

/// Calls @p call with a writer and @p COUNT arguments, if that is how many there are.
template <std::size_t COUNT>
void applyIfCount(AnyWriter writer, const Arguments& arguments, const auto& call)
{
    const auto given = std::ranges::find(arguments, nullptr) - arguments.begin();
    if (given == COUNT) {
        [&]<std::size_t... INDEX>(std::index_sequence<INDEX...>)
        {
            std::visit([&](auto* target) { call(*target, *arguments[INDEX]...); }, writer);
        }
        (std::make_index_sequence<COUNT>());
    }
}

/// An operation whose overloads have @p COUNTS arguments and are called by @p call.
template <std::size_t... COUNTS>
Operation operation(const char* name, std::string_view kinds, auto call)
{
    return {name, kinds, [](AnyWriter writer, const Arguments& arguments) {
                (applyIfCount<COUNTS>(writer, arguments, decltype(call)()), ...);
            }};
}

} // namespace detail

// The operations: a new one is a line here. Random sequences choose the first ones most often.

inline const auto startElement =
    detail::operation<3>("writeStartElement", "NUP", [](auto& writer, auto&... arguments) {
        writer.writeStartElement(arguments...);
    });
inline const auto endElement =
    detail::operation<0>("writeEndElement", "", [](auto& writer, auto&... arguments) {
        writer.writeEndElement(arguments...);
    });
inline const auto attribute =
    detail::operation<2, 3, 4>("writeAttribute", "NUPT", [](auto& writer, auto&... arguments) {
        writer.writeAttribute(arguments...);
    });
inline const auto value = detail::operation<1>(
    "writeValue", "T", [](auto& writer, auto&... arguments) { writer.writeValue(arguments...); });
inline const auto element =
    detail::operation<2, 3, 4>("writeElement", "NUPT", [](auto& writer, auto&... arguments) {
        writer.writeElement(arguments...);
    });
inline const auto emptyElement =
    detail::operation<3>("writeEmptyElement", "NUP", [](auto& writer, auto&... arguments) {
        writer.writeEmptyElement(arguments...);
    });
inline const auto startAttribute =
    detail::operation<3>("writeStartAttribute", "NUP", [](auto& writer, auto&... arguments) {
        writer.writeStartAttribute(arguments...);
    });
inline const auto endAttribute =
    detail::operation<0>("writeEndAttribute", "", [](auto& writer, auto&... arguments) {
        writer.writeEndAttribute(arguments...);
    });
inline const auto startElementClose =
    detail::operation<0>("writeStartElementClose", "", [](auto& writer, auto&... arguments) {
        writer.writeStartElementClose(arguments...);
    });
inline const auto namespaceDeclaration =
    detail::operation<2>("writeNamespace", "UP", [](auto& writer, auto&... arguments) {
        writer.writeNamespace(arguments...);
    });
inline const auto defaultNamespace =
    detail::operation<1>("writeDefaultNamespace", "U", [](auto& writer, auto&... arguments) {
        writer.writeDefaultNamespace(arguments...);
    });
inline const auto registerDefault =
    detail::operation<1>("registerDefaultNamespace", "U", [](auto& writer, auto&... arguments) {
        writer.registerDefaultNamespace(arguments...);
    });
inline const auto rawXml = detail::operation<1>(
    "writeRawXml", "T", [](auto& writer, auto&... arguments) { writer.writeRawXml(arguments...); });
inline const auto startDocument =
    detail::operation<1>("writeStartDocument", "V", [](auto& writer, auto&... arguments) {
        writer.writeStartDocument(arguments...);
    });
inline const auto endDocument =
    detail::operation<0>("writeEndDocument", "", [](auto& writer, auto&... arguments) {
        writer.writeEndDocument(arguments...);
    });

/// Makes @p call on @p writer. An argument whose bit is set in @p replaced is @p replacement.
inline void applyWith(const Call& call, AnyWriter writer, const std::u16string& replacement,
                      std::size_t replaced)
{
    Arguments arguments{};
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        arguments.at(i) = (replaced >> i & 1) != 0 ? &replacement : &call.arguments[i];
    }
    call.operation->apply(writer, arguments);
}

inline void Call::applyTo(AnyWriter writer) const
{
    applyWith(*this, writer, {}, 0);
}

inline bool Call::failsOn(AnyWriter writer) const
{
    try {
        applyTo(writer);
        return false;
    } catch (const MadeToFail&) {
        return true;
    }
}

inline std::ostream& operator<<(std::ostream& stream, const Call& call)
{
    stream << call.operation->name << '(';
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

} // namespace tarn::tests
