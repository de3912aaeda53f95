// The forms in which writers take text and names. A document converts every text to the form of its
// writer before the clock starts.
#pragma once

#include <string>
#include <string_view>

namespace benchmarks {

std::string toUtf8(std::u16string_view text);

std::u16string toUtf16(std::string_view text);

inline std::string_view toUtf8(std::string_view text)
{
    return text;
}

/// Converts @p text to the string type of a writer. A writer with a string type of its own adds a
/// specialisation.
template <class String>
String convert(const std::u16string& text) = delete;

template <>
inline std::u16string convert(const std::u16string& text)
{
    return text;
}

template <>
inline std::string convert(const std::u16string& text)
{
    return toUtf8(text);
}

template <class String>
struct Namespace
{
    String uri;
    String prefix;
    /// The qualified name of the attribute that declares it, for writers that do not manage
    /// namespaces.
    String declaration;

    Namespace(const std::u16string& uri, const std::u16string& prefix)
        : uri(convert<String>(uri)), prefix(convert<String>(prefix)),
          declaration(convert<String>(u"xmlns:" + prefix))
    {
    }
};

template <class String>
struct Name
{
    String localName;
    String namespaceUri;
    String prefix;
    /// Prefix, colon and local name, for writers that do not manage namespaces.
    String qualifiedName;

    explicit Name(const std::u16string& localName)
        : localName(convert<String>(localName)), qualifiedName(this->localName)
    {
    }

    Name(const Namespace<String>& space, const std::u16string& localName)
        : localName(convert<String>(localName)), namespaceUri(space.uri), prefix(space.prefix),
          qualifiedName(space.prefix + convert<String>(u":") + this->localName)
    {
    }
};

} // namespace benchmarks
