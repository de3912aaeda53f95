// Names of elements, attributes and processing instructions, and the namespaces that they are in.
#pragma once

#include "tarn/document/names.hpp"

#include <string>
#include <string_view>

namespace tarn::document {

/// A namespace: its name, and the prefix that is wished for it. A view: the texts must outlive it.
///
/// Without a prefix, elements in the namespace make it the default namespace where they need it,
/// and no attribute can be in it.
///
/// The name is not empty and has only ASCII characters that a URI can have: no blanks and none of
/// < > " { } | \ ^ `. The prefix is empty or an NCName. The prefixes `xml` and `xmlns` and their
/// namespace names are reserved (Namespaces in XML 1.0, section 3): only XML has the first, nothing
/// the second. A constexpr Namespace that breaks these rules does not compile; any other is refused
/// where it is used.
///
/// @see @ref namespaces-of-a-document
class Namespace
{
public:
    /// @param uri the namespace name, which is compared character by character.
    /// @param prefix the prefix that is wished for, without a colon; empty for none.
    constexpr explicit Namespace(std::string_view uri, std::string_view prefix = {})
        : uriText(uri), prefixText(prefix)
    {
        if (__builtin_is_constant_evaluated()) {
            if (!detail::isUri(uri) || !detail::areAllowedTogether(uri, prefix)) {
                detail::theNamespaceNameOrThePrefixIsNotAllowed();
            }
            checked = true;
        }
    }

    /// The namespace name.
    constexpr std::string_view uri() const { return uriText; }
    /// The prefix that is wished for; empty for none.
    constexpr std::string_view prefix() const { return prefixText; }
    /// Whether the compiler has checked it.
    constexpr bool isChecked() const { return checked; }

private:
    std::string_view uriText;
    std::string_view prefixText;
    bool checked = false;
};

/// The namespace of `xml:lang`, `xml:space`, `xml:base` and `xml:id`, which is never declared.
inline constexpr Namespace XML{"http://www.w3.org/XML/1998/namespace", "xml"};

/// The name of an element, an attribute or the target of a processing instruction. A view: the
/// texts must outlive it.
///
/// The local name is an NCName in UTF-8: a Name without a colon (XML 1.0, fifth edition). A
/// constexpr Name that is none does not compile; any other is refused where it is used.
///
/// @see @ref names
class Name
{
public:
    /// A name in no namespace. A null pointer counts as an empty text, which is no name.
    constexpr Name(const char* localName) // NOLINT(google-explicit-constructor)
        : Name(localName == nullptr ? std::string_view() : std::string_view(localName))
    {
    }
    /// @overload
    constexpr Name(std::string_view localName) // NOLINT(google-explicit-constructor)
        : local(localName)
    {
        check();
    }
    /// @overload
    Name(const std::string& localName) // NOLINT(google-explicit-constructor)
        : Name(std::string_view(localName))
    {
    }
    /// A name in @p space.
    constexpr Name(const Namespace& space, std::string_view localName)
        : local(localName), uriText(space.uri()), prefixText(space.prefix()), inNamespace(true)
    {
        check();
    }

    /// The local name.
    constexpr std::string_view localName() const { return local; }
    /// The namespace name; empty for a name in no namespace.
    constexpr std::string_view uri() const { return uriText; }
    /// The prefix that its namespace wishes for; empty for none.
    constexpr std::string_view prefix() const { return prefixText; }
    /// Whether it was given with a namespace, even with one whose name is empty.
    constexpr bool hasNamespace() const { return inNamespace; }
    /// Whether the compiler has checked it, and its namespace.
    constexpr bool isChecked() const { return checked; }

private:
    constexpr void check()
    {
        if (__builtin_is_constant_evaluated()) {
            if (!detail::isNcName(local)) {
                detail::theNameIsNotAnNcName();
            }
            checked = true;
        }
    }

    std::string_view local;
    std::string_view uriText;
    std::string_view prefixText;
    bool inNamespace = false;
    bool checked = false;
};

} // namespace tarn::document
