// XmlWriter::Impl: the document, elements, attributes and text.

#include "tarn/utils/num_to_string.hpp"
#include "tarn/xml/text_escaping.hpp"
#include "tarn/xml/XmlWriterImpl.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tarn::utils {

using namespace detail;

namespace {

using namespace std::string_view_literals;

constexpr auto DECLARATION_START = u"<?xml version=\""sv;
constexpr auto ENCODING_START = u" encoding=\""sv;
constexpr auto DECLARATION_END = u"?>"sv;
constexpr auto DOUBLE_QUOTE = u"\""sv;
constexpr auto LINE_FEED = u"\n"sv;
constexpr auto START_TAG_START = u"<"sv;
constexpr auto EMPTY_ELEMENT_END = u"/>"sv;
constexpr auto END_TAG_START = u"</"sv;
constexpr auto BLANK = u" "sv;
constexpr auto VALUE_START = u"=\""sv;
constexpr auto CHARACTER_REFERENCE_START = u"&#"sv;
constexpr auto REFERENCE_END = u";"sv;

/// The indentation of a line with @p depth elements open around it.
Spaces indentation(std::size_t depth)
{
    constexpr std::size_t SPACES_PER_LEVEL = 2;
    return {depth * SPACES_PER_LEVEL};
}

} // namespace

XmlWriter::Impl::Impl(std::unique_ptr<Sink>&& sink)
    : sink(std::move(sink)), output(*this->sink), reuse(prefixMap)
{
    // In the map's order, so that neither needs a search.
    prefixMap.emplace_hint(prefixMap.end(), XMLNS_NAMESPACE, XMLNS_PREFIX);
    prefixMap.emplace_hint(prefixMap.end(), XML_NAMESPACE, XML_PREFIX);
}

void XmlWriter::Impl::writeStartDocument(const std::u16string& version)
{
    output.write(DECLARATION_START, version, DOUBLE_QUOTE);
    const std::u16string encoding = sink->encodingName();
    if (!encoding.empty()) {
        output.write(ENCODING_START, encoding, DOUBLE_QUOTE);
    }
    output.write(DECLARATION_END);
    isDefaultVersion = version == DEFAULT_VERSION;
}

void XmlWriter::Impl::writeEndDocument()
{
    while (!elementStack.empty()) {
        writeEndElement();
    }
    output.flush();
}

void XmlWriter::Impl::writeRawXml(const std::u16string& xml)
{
    output.write(xml);
}

void XmlWriter::Impl::writeValue(const std::u16string& value)
{
    if (state == State::StartTagOpen) {
        closeStartTag();
    }
    writeEscaped(value);
}

void XmlWriter::Impl::writeStartElement(const std::u16string& localName,
                                        const std::u16string& namespaceUri,
                                        const std::u16string& prefix)
{
    finishStartTag();
    const QualifiedName name = qualify(localName, namespaceUri, prefix);
    const bool isShortName = isShort(name);
    if (!isShortName) {
        prepareLongName(name);
    }
    output.write(LINE_FEED, indentation(reuse.depth), START_TAG_START, name);
    StackItem& element = elementStack.emplace_back();
    if (isShortName) {
        assignShortName(name, element.name);
    } else {
        element.name = std::move(reuse.longName);
    }
    ++reuse.depth;
    state = State::StartTagOpen;
    if (!pendingRegistrations.empty()) {
        processDeferredRegistrations();
    }
}

void XmlWriter::Impl::prepareLongName(QualifiedName name)
{
    if (reuse.longName.capacity() == std::u16string().capacity()) {
        reuse.longName = reuse.elementNames.take();
    }
    reuse.longName.clear();
    appendPiece(name, reuse.longName);
}

void XmlWriter::Impl::writeStartElementClose()
{
    finishStartTag();
}

void XmlWriter::Impl::writeEndElement()
{
    if (elementStack.empty()) {
        return;
    }
    finishAttribute();
    StackItem& element = elementStack.back();
    if (state == State::StartTagOpen) {
        output.write(EMPTY_ELEMENT_END);
    } else if (state == State::AfterStartTag) {
        output.write(END_TAG_START, element.name, TAG_END);
    } else {
        output.write(LINE_FEED, indentation(reuse.depth - 1), END_TAG_START, element.name, TAG_END);
    }
    if (!element.declaredNamespaces.empty()) {
        endBindings(element);
        reuse.declaredNamespaces.put(std::move(element.declaredNamespaces));
    }
    if (element.name.capacity() != std::u16string().capacity()) {
        reuse.elementNames.put(std::move(element.name));
    }
    elementStack.pop_back();
    --reuse.depth;
    state = State::AfterEndTag;
}

void XmlWriter::Impl::writeElement(const std::u16string& localName,
                                   const std::u16string& namespaceUri, const std::u16string& prefix,
                                   const std::u16string& value)
{
    finishStartTag();
    if (const std::u16string* const settled = settledPrefix(namespaceUri)) {
        const QualifiedName name{*settled, localName};
        if (output.writeInPlace(LINE_FEED, indentation(reuse.depth), START_TAG_START, name, TAG_END,
                                escaped(value), END_TAG_START, name, TAG_END)) {
            state = State::AfterEndTag;
            return;
        }
    }
    writeStartElement(localName, namespaceUri, prefix);
    writeValue(value);
    writeEndElement();
}

void XmlWriter::Impl::writeEmptyElement(const std::u16string& localName,
                                        const std::u16string& namespaceUri,
                                        const std::u16string& prefix)
{
    finishStartTag();
    if (const std::u16string* const settled = settledPrefix(namespaceUri)) {
        if (output.writeInPlace(LINE_FEED, indentation(reuse.depth), START_TAG_START,
                                QualifiedName{*settled, localName}, EMPTY_ELEMENT_END)) {
            state = State::AfterEndTag;
            return;
        }
    }
    writeStartElement(localName, namespaceUri, prefix);
    writeEndElement();
}

void XmlWriter::Impl::writeStartAttribute(const std::u16string& localName,
                                          const std::u16string& namespaceUri,
                                          const std::u16string& prefix)
{
    finishAttribute();
    if (state == State::StartTagOpen) {
        openAttribute(qualify(localName, namespaceUri, prefix));
    }
}

void XmlWriter::Impl::writeEndAttribute()
{
    finishAttribute();
}

void XmlWriter::Impl::endAttribute()
{
    closeAttribute();
    if (!pendingRegistrations.empty()) {
        processDeferredRegistrations();
    }
}

void XmlWriter::Impl::writeAttribute(const std::u16string& localName,
                                     const std::u16string& namespaceUri,
                                     const std::u16string& prefix, const std::u16string& value)
{
    finishAttribute();
    if (state == State::StartTagOpen) {
        const std::u16string* const settled = settledPrefix(namespaceUri);
        if (settled != nullptr && output.writeInPlace(BLANK, QualifiedName{*settled, localName},
                                                      VALUE_START, escaped(value), DOUBLE_QUOTE)) {
            return;
        }
    }
    writeStartAttribute(localName, namespaceUri, prefix);
    writeValue(value);
    finishAttribute();
}

void XmlWriter::Impl::openAttribute(QualifiedName name)
{
    output.write(BLANK, name, VALUE_START);
    state = State::AttributeOpen;
}

void XmlWriter::Impl::closeAttribute()
{
    output.write(DOUBLE_QUOTE);
    state = State::StartTagOpen;
}

void XmlWriter::Impl::writeEscaped(const std::u16string& value)
{
    if (output.writeInPlace(escaped(value))) {
        return;
    }
    if (value.size() > LONGEST_SHORT_VALUE) {
        writeLongEscaped(value);
        return;
    }
    std::u16string_view rest = value;
    while (!rest.empty()) {
        rest = writeRun(value, rest);
    }
}

void XmlWriter::Impl::writeLongEscaped(const std::u16string& value)
{
    const Replacements& replacements = escaped(value).replacements;
    std::u16string_view rest = output.escapeInPlace(value, replacements);
    while (!rest.empty()) {
        const std::size_t written = writeStep(rest, replacements);
        rest = written != 0 ? rest.substr(written) : writeRun(value, rest);
        rest = output.escapeInPlace(rest, replacements);
    }
}

std::size_t XmlWriter::Impl::writeStep(std::u16string_view rest, const Replacements& replacements)
{
    char16_t step[ESCAPING_MARGIN];
    const char16_t* const last = rest.begin() + std::min(rest.size(), ESCAPING_STEP);
    const EscapedRun run = escape(rest.begin(), last, step, std::end(step), replacements);
    const bool isWritten = output.writeInPlace(std::u16string_view(step, run.written));
    return isWritten ? static_cast<std::size_t>(last - rest.begin()) : 0;
}

std::u16string_view XmlWriter::Impl::writeRun(const std::u16string& value, std::u16string_view rest)
{
    const char16_t* const special = findSpecial(rest.begin(), rest.end());
    const std::u16string_view run(rest.begin(), special);
    if (run.size() == value.size()) {
        output.write(value);
    } else if (!run.empty()) {
        output.write(run);
    }
    rest.remove_prefix(run.size());
    if (!rest.empty()) {
        writeReplacement(rest.front());
        rest.remove_prefix(1);
    }
    return rest;
}

void XmlWriter::Impl::writeReplacement(char16_t special)
{
    if (isControl(special) && !isDefaultVersion) {
        output.write(CHARACTER_REFERENCE_START, num_to_string(special), REFERENCE_END);
    } else if (const auto replacement = REPLACEMENTS_OF_XML_1_0[special].text();
               !replacement.empty()) {
        output.write(replacement);
    }
}

} // namespace tarn::utils
