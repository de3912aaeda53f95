// What a document says, read with Expat.
#pragma once

#include <expat.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

namespace tarn::tests {

namespace detail {

/// Expat's name for an expanded name, which has a blank behind the namespace.
inline std::string outlineOfExpatName(std::string_view name)
{
    const std::size_t space = std::min(name.find(' '), name.size());
    const std::string local(name.substr(space == name.size() ? 0 : space + 1));
    return '{' + std::string(name.substr(0, space == name.size() ? 0 : space)) + '}' + local;
}

inline std::string& outlineOf(void* data)
{
    return *static_cast<std::string*>(data);
}

} // namespace detail

/// As outlineOfXml(). Names must be such that the fourth edition of XML 1.0 has them too.
inline std::string outlineByExpat(std::string_view xml)
{
    using detail::outlineOf;
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
        XML_ParserCreateNS(nullptr, ' '), XML_ParserFree);
    std::string outline;
    XML_SetUserData(parser.get(), &outline);
    XML_SetElementHandler(
        parser.get(),
        [](void* data, const char* name, const char** attributes) {
            outlineOf(data) += '<' + detail::outlineOfExpatName(name);
            for (; *attributes != nullptr; attributes += 2) {
                outlineOf(data) +=
                    ' ' + detail::outlineOfExpatName(attributes[0]) + "=\"" + attributes[1] + '"';
            }
            outlineOf(data) += '>';
        },
        [](void* data, const char*) { outlineOf(data) += "</>"; });
    XML_SetCharacterDataHandler(parser.get(), [](void* data, const char* text, int length) {
        outlineOf(data).append(text, static_cast<std::size_t>(length));
    });
    XML_SetCommentHandler(parser.get(), [](void* data, const char* text) {
        outlineOf(data) += std::string("<!--") + text + "-->";
    });
    XML_SetProcessingInstructionHandler(
        parser.get(), [](void* data, const char* target, const char* text) {
            outlineOf(data) += std::string("<?") + target + ' ' + text + "?>";
        });
    XML_SetStartDoctypeDeclHandler(
        parser.get(),
        [](void* data, const char* name, const char* systemId, const char* publicId, int) {
            outlineOf(data) += std::string("<!DOCTYPE ") + name + ' ' +
                               (publicId != nullptr ? publicId : "") + ' ' +
                               (systemId != nullptr ? systemId : "") + '>';
        });
    if (XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), XML_TRUE) ==
        XML_STATUS_ERROR) {
        return std::string("not well-formed: ") + XML_ErrorString(XML_GetErrorCode(parser.get()));
    }
    return outline;
}

} // namespace tarn::tests
