// What a document says, read with libxml2.
#pragma once

#include <libxml/parser.h>
#include <memory>
#include <string>

namespace tarn::tests {

/// Whether text that stands beside elements counts.
enum class TextBesideElements
{
    KEPT,
    LEFT_OUT ///< It is layout.
};

namespace detail {

inline std::string toString(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

inline std::string outlineOfName(const xmlNs* space, const xmlChar* name)
{
    return '{' + (space != nullptr ? toString(space->href) : "") + '}' + toString(name);
}

inline void outlineNodes(const xmlNode* node, TextBesideElements textBesideElements,
                         std::string& outline)
{
    const bool leavesTextOut = textBesideElements == TextBesideElements::LEFT_OUT &&
                               node != nullptr && xmlChildElementCount(node->parent) > 0;
    for (; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE) {
            outline += leavesTextOut ? "" : toString(node->content);
        } else if (node->type == XML_COMMENT_NODE) {
            outline += "<!--" + toString(node->content) + "-->";
        } else if (node->type == XML_PI_NODE) {
            outline += "<?" + toString(node->name) + ' ' + toString(node->content) + "?>";
        } else if (node->type == XML_DTD_NODE) {
            const auto* const doctype = reinterpret_cast<const xmlDtd*>(node);
            outline += "<!DOCTYPE " + toString(doctype->name) + ' ' +
                       toString(doctype->ExternalID) + ' ' + toString(doctype->SystemID) + '>';
        } else {
            outline += '<' + outlineOfName(node->ns, node->name);
            for (const xmlAttr* each = node->properties; each != nullptr; each = each->next) {
                outline += ' ' + outlineOfName(each->ns, each->name) + "=\"";
                outlineNodes(each->children, textBesideElements, outline);
                outline += '"';
            }
            outline += '>';
            outlineNodes(node->children, textBesideElements, outline);
            outline += "</>";
        }
    }
}

} // namespace detail

/// What @p xml says, prefixes aside: `<{URI}NAME {URI}NAME="VALUE">` for a start tag, `</>` for an
/// end tag, `<!--TEXT-->`, `<?TARGET DATA?>`, `<!DOCTYPE NAME PUBLIC-ID SYSTEM-ID>`.
/// @returns instead, if it is not well-formed with regard to namespaces too, what is wrong; this
/// does not begin with `<`.
inline std::string outlineOfXml(const std::string& xml,
                                TextBesideElements textBesideElements = TextBesideElements::KEPT)
{
    // Before any of several threads parses.
    [[maybe_unused]] static const bool isPrepared = (xmlInitParser(), true);
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(),
                                                                              xmlFreeParserCtxt);
    constexpr int OPTIONS = XML_PARSE_NOENT | XML_PARSE_NOCDATA | XML_PARSE_HUGE | XML_PARSE_NONET |
                            XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlCtxtReadMemory(parser.get(), xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                          OPTIONS),
        xmlFreeDoc);
    if (document == nullptr || parser->wellFormed != 1 || parser->nsWellFormed != 1) {
        return std::string("not well-formed: ") +
               (parser->lastError.message != nullptr ? parser->lastError.message : "");
    }
    std::string outline;
    detail::outlineNodes(document->children, textBesideElements, outline);
    return outline;
}

} // namespace tarn::tests
