// Reads XML with libxml2.
#include "benchmarks/Outline.hpp"

#include <libxml/parser.h>

#include <memory>

namespace benchmarks {

namespace {

std::string text(const xmlChar* characters)
{
    return characters == nullptr ? "" : reinterpret_cast<const char*>(characters);
}

std::string expandedName(const xmlNs* space, const xmlChar* localName)
{
    return '{' + text(space == nullptr ? nullptr : space->href) + '}' + text(localName);
}

void addAttributes(const xmlNode* element, std::string& outline)
{
    for (const xmlAttr* attribute = element->properties; attribute != nullptr;
         attribute = attribute->next) {
        outline += "\n@" + expandedName(attribute->ns, attribute->name) + '=';
        for (const xmlNode* part = attribute->children; part != nullptr; part = part->next) {
            outline += text(part->content);
        }
    }
}

/// Adds @p element and what is inside it. Text beside elements is layout.
void addElement(const xmlNode* element, std::string& outline)
{
    outline += "\n<" + expandedName(element->ns, element->name);
    addAttributes(element, outline);
    const bool hasElements = xmlChildElementCount(const_cast<xmlNode*>(element)) > 0;
    if (!hasElements && element->children != nullptr) {
        outline += "\n=";
    }
    for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            addElement(child, outline);
        } else if (!hasElements) {
            outline += text(child->content);
        }
    }
    outline += "\n>";
}

std::optional<std::string> readOutline(std::string_view xml)
{
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                      XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    if (document == nullptr) {
        return std::nullopt;
    }
    std::string outline;
    addElement(xmlDocGetRootElement(document.get()), outline);
    return outline;
}

[[maybe_unused]] const OutlineReader registration = outlineReader() = readOutline;

} // namespace

} // namespace benchmarks
