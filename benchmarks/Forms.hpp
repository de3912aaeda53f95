// The forms in which writers take text and names. A document keeps every text in the form of the
// writer that it is for, prepared before the time is taken.
#pragma once

#include <rapidjson/encodings.h>
#include <rapidjson/stringbuffer.h>

#include <string>
#include <string_view>

namespace benchmarks {

/// Converts UTF-16 text to the string type of a writer. A writer with a string type of its own adds
/// a specialisation.
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
    using Utf16 = rapidjson::UTF16<char16_t>;
    using Utf8 = rapidjson::UTF8<>;
    rapidjson::GenericStringStream<Utf16> source(text.c_str());
    rapidjson::StringBuffer converted;
    while (source.Peek() != 0) {
        rapidjson::Transcoder<Utf16, Utf8>::Transcode(source, converted);
    }
    return {converted.GetString(), converted.GetSize()};
}

template <class String>
struct Namespace
{
    String uri;
    String prefix;
    /// The qualified name of the attribute that declares it, for writers that do not.
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
