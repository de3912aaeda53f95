#include "tools/json2xml/Outline.hpp"

#include <libxml/parser.h>
#include <memory>
#include <rapidjson/reader.h>
#include <stdexcept>

namespace json2xml::test {

namespace {

std::string toString(const xmlChar* text)
{
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

std::string quote(const std::string& text)
{
    return '<' + text + '>';
}

std::string outlineOf(const xmlNode* element);

/// What is in @p parent, each with a comma. A map's members have keys and nothing else has.
std::string outlineOfChildren(const xmlNode* parent, bool isMap)
{
    std::string all;
    for (const xmlNode* child = parent->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            const xmlAttr* const key = child->properties;
            if ((key != nullptr) != isMap) {
                throw std::runtime_error("attributes");
            }
            if (isMap) {
                if (toString(key->name) != "key" || key->ns != nullptr || key->next != nullptr) {
                    throw std::runtime_error("attribute " + toString(key->name));
                }
                all +=
                    quote(toString(key->children == nullptr ? nullptr : key->children->content)) +
                    '=';
            }
            all += outlineOf(child) + ',';
        }
    }
    return all;
}

std::string outlineOf(const xmlNode* element)
{
    const std::string name = toString(element->name);
    if (element->ns == nullptr || element->ns->prefix != nullptr ||
        toString(element->ns->href) != "http://www.w3.org/2005/xpath-functions") {
        throw std::runtime_error("namespace of " + name);
    }
    if (name == "map") {
        return '{' + outlineOfChildren(element, true) + '}';
    }
    if (name == "array") {
        return '[' + outlineOfChildren(element, false) + ']';
    }
    const std::string text =
        element->children == nullptr ? "" : toString(element->children->content);
    if (name == "string") {
        return quote(text);
    }
    if (name == "number" || name == "boolean") {
        return text;
    }
    if (name == "null" && element->children == nullptr) {
        return name;
    }
    throw std::runtime_error("element " + name);
}

/// Collects the outline from the events of RapidJSON's reader.
struct OutlineHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, OutlineHandler>
{
    bool add(const std::string& text)
    {
        outline += text;
        return true;
    }
    bool Null() { return add("null,"); }
    bool Bool(bool isTrue) { return add(isTrue ? "true," : "false,"); }
    bool RawNumber(const char* text, unsigned size, bool) { return add({text, size}) && add(","); }
    bool String(const char* text, unsigned size, bool) { return add(quote({text, size}) + ','); }
    bool StartObject() { return add("{"); }
    bool Key(const char* text, unsigned size, bool) { return add(quote({text, size}) + '='); }
    bool EndObject(unsigned) { return add("},"); }
    bool StartArray() { return add("["); }
    bool EndArray(unsigned) { return add("],"); }

    std::string outline;
};

} // namespace

std::string outlineOfXml(const std::string& xml)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", nullptr,
                      XML_PARSE_HUGE | XML_PARSE_NOERROR),
        xmlFreeDoc);
    return document == nullptr ? "not well-formed"
                               : outlineOf(xmlDocGetRootElement(document.get()));
}

std::string outlineOfJson(const std::string& json)
{
    OutlineHandler handler;
    rapidjson::StringStream stream(json.c_str());
    rapidjson::Reader().Parse<rapidjson::kParseNumbersAsStringsFlag>(stream, handler);
    handler.outline.pop_back();
    return handler.outline;
}

} // namespace json2xml::test
