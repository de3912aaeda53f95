// XmlWriter::Impl: the document, elements, attributes and text.

#include "tarn/utils/num_to_string.hpp"
#include "tarn/xml/text_escaping.hpp"
#include "tarn/xml/XmlWriterImpl.hpp"

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
constexpr auto TAG_END = u">"sv;
constexpr auto EMPTY_ELEMENT_END = u"/>"sv;
constexpr auto END_TAG_START = u"</"sv;
constexpr auto BLANK = u" "sv;
constexpr auto VALUE_START = u"=\""sv;
constexpr auto CHARACTER_REFERENCE_START = u"&#"sv;
constexpr auto REFERENCE_END = u";"sv;
constexpr char16_t VERTICAL_TAB = 0x0B;

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
    writeEndAttribute();
    while (!elementStack.empty()) {
        writeEndElement();
    }
    sink->flush();
}

void XmlWriter::Impl::writeRawXml(const std::u16string& xml)
{
    output.write(xml);
}

void XmlWriter::Impl::writeValue(const std::u16string& value)
{
    if (state == State::StartTagOpen) {
        writeStartElementClose();
    }
    writeEscaped(value);
}

void XmlWriter::Impl::writeStartElement(const std::u16string& localName,
                                        const std::u16string& namespaceUri,
                                        const std::u16string& prefix)
{
    writeStartElementClose();
    StackItem element = reuse.elements.take();
    qualify(localName, namespaceUri, prefix).assignTo(element.name);
    output.write(LINE_FEED, indentation(elementStack.size()), START_TAG_START, element.name);
    elementStack.push_back(std::move(element));
    state = State::StartTagOpen;
    if (!pendingRegistrations.empty()) {
        processDeferredRegistrations();
    }
}

void XmlWriter::Impl::writeStartElementClose()
{
    writeEndAttribute();
    if (state == State::StartTagOpen) {
        output.write(TAG_END);
        state = State::AfterStartTag;
    }
}

void XmlWriter::Impl::writeEndElement()
{
    if (elementStack.empty()) {
        return;
    }
    writeEndAttribute();
    StackItem& element = elementStack.back();
    if (state == State::StartTagOpen) {
        output.write(EMPTY_ELEMENT_END);
    } else if (state == State::AfterStartTag) {
        output.write(END_TAG_START, element.name, TAG_END);
    } else {
        output.write(LINE_FEED, indentation(elementStack.size() - 1), END_TAG_START, element.name,
                     TAG_END);
    }
    if (!element.declaredNamespaces.empty()) {
        endBindings(element);
    }
    reuse.elements.put(std::move(element));
    elementStack.pop_back();
    state = State::AfterEndTag;
}

void XmlWriter::Impl::writeStartAttribute(const std::u16string& localName,
                                          const std::u16string& namespaceUri,
                                          const std::u16string& prefix)
{
    writeEndAttribute();
    if (state == State::StartTagOpen) {
        openAttribute(qualify(localName, namespaceUri, prefix));
    }
}

void XmlWriter::Impl::writeEndAttribute()
{
    if (state == State::AttributeOpen) {
        closeAttribute();
        if (!pendingRegistrations.empty()) {
            processDeferredRegistrations();
        }
    }
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

void XmlWriter::Impl::writeEscaped(std::u16string_view text)
{
    while (!text.empty()) {
        output.compose(ESCAPING_MARGIN, [&text](char16_t* out, char16_t* outLast) noexcept {
            const EscapedRun run = escapeMarkup(text.begin(), text.end(), out, outLast);
            text.remove_prefix(static_cast<std::size_t>(run.read - text.begin()));
            return run.written;
        });
        if (!text.empty()) {
            text = writeRun(text);
        }
    }
}

std::u16string_view XmlWriter::Impl::writeRun(std::u16string_view text)
{
    const char16_t* const special = findSpecial(text.begin(), text.end());
    const std::u16string_view run(text.begin(), special);
    if (!run.empty()) {
        output.write(run);
    }
    text.remove_prefix(run.size());
    if (!text.empty()) {
        writeReplacement(text.front());
        text.remove_prefix(1);
    }
    return text;
}

void XmlWriter::Impl::writeReplacement(char16_t special)
{
    const std::u16string_view reference = entityReference(special);
    if (!reference.empty()) {
        output.write(reference);
    } else if (!isDefaultVersion) {
        output.write(CHARACTER_REFERENCE_START, num_to_string(special), REFERENCE_END);
    } else if (special == VERTICAL_TAB) {
        output.write(BLANK);
    }
}

} // namespace tarn::utils
