// The content of a JSON text, in the form that outlineOfXml() gives.
#pragma once

#include "support/xml_outline.hpp"

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <string>

namespace json2xml::test {

using tarn::tests::outlineOfXml;

/// Makes the outline from the events of RapidJSON's reader.
struct OutlineHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, OutlineHandler>
{
    bool Null() { return add("null", ""); }
    bool Bool(bool isTrue) { return add("boolean", isTrue ? "true" : "false"); }
    bool RawNumber(const char* text, unsigned size, bool) { return add("number", {text, size}); }
    bool String(const char* text, unsigned size, bool) { return add("string", {text, size}); }
    bool Key(const char* text, unsigned size, bool)
    {
        key = " {}key=\"" + std::string(text, size) + '"';
        return true;
    }
    bool StartObject() { return start("map"); }
    bool EndObject(unsigned members) { return end(members); }
    bool StartArray() { return start("array"); }
    bool EndArray(unsigned values) { return end(values); }

    std::string outline;

private:
    std::string line() const { return '\n' + std::string(2 * depth, ' '); }

    bool start(const std::string& name)
    {
        outline += (depth > 0 ? line() : "") + "<{http://www.w3.org/2005/xpath-functions}" + name +
                   key + '>';
        key.clear();
        ++depth;
        return true;
    }
    bool end(unsigned children)
    {
        --depth;
        outline += (children > 0 ? line() : "") + "</>";
        return true;
    }
    bool add(const std::string& name, const std::string& text)
    {
        start(name);
        outline += text;
        return end(0);
    }

    std::string key;
    std::size_t depth = 0;
};

/// The outline of the XML that json2xml should make of @p json. Characters that XML does not allow
/// are still in it. It is empty if RapidJSON refuses the text; it refuses some JSON too: numbers
/// that a `double` cannot hold, and NUL.
inline std::string outlineOfJson(const std::string& json)
{
    OutlineHandler handler;
    rapidjson::MemoryStream stream(json.data(), json.size());
    constexpr unsigned FLAGS = rapidjson::kParseIterativeFlag |
                               rapidjson::kParseValidateEncodingFlag |
                               rapidjson::kParseNumbersAsStringsFlag;
    const bool isRefused = rapidjson::Reader().Parse<FLAGS>(stream, handler).IsError();
    return isRefused || stream.Tell() != json.size() ? "" : handler.outline;
}

} // namespace json2xml::test
