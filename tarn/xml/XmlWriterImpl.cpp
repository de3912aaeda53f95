#include "tarn/xml/XmlWriterImpl.hpp"

#include "tarn/utils/num_to_string.hpp"
#include "tarn/xml/constants.hpp"
#include "tarn/xml/text_escaping.hpp"

#include <string_view>
#include <utility>

namespace tarn::utils {

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
constexpr auto GENERATED_PREFIX_START = u"ns"sv;
constexpr char16_t VERTICAL_TAB = 0x0B;

/// The indentation of a line with @p depth elements open around it.
Spaces indentation(std::size_t depth)
{
    constexpr std::size_t SPACES_PER_LEVEL = 2;
    return {depth * SPACES_PER_LEVEL};
}

} // namespace

XmlWriter::Impl::Impl(std::unique_ptr<Sink>&& sink)
    : sink(std::move(sink)), output(*this->sink), bindingCache(prefixMap)
{
    // In the order of the names, which spares a search.
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
    // A caller can pass the very string that the sink appends to: what it holds now is the value.
    const std::size_t length = value.size();
    if (state == State::StartTagOpen) {
        writeStartElementClose();
    }
    writeEscaped(value, length);
}

void XmlWriter::Impl::writeStartElement(const std::u16string& localName,
                                        const std::u16string& namespaceUri,
                                        const std::u16string& prefix)
{
    writeStartElementClose();
    StackItem element = spareItems.take();
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
    for (std::u16string& namespaceUri : element.declaredNamespaces) {
        endBinding(namespaceUri);
        spareNames.put(std::move(namespaceUri));
    }
    element.declaredNamespaces.clear();
    spareItems.put(std::move(element));
    elementStack.pop_back();
    state = State::AfterEndTag;
}

void XmlWriter::Impl::writeStartAttribute(const std::u16string& localName,
                                          const std::u16string& namespaceUri,
                                          const std::u16string& prefix)
{
    writeEndAttribute();
    if (state == State::StartTagOpen) {
        output.write(BLANK, qualify(localName, namespaceUri, prefix), VALUE_START);
        state = State::AttributeOpen;
    }
}

void XmlWriter::Impl::writeEndAttribute()
{
    if (state == State::AttributeOpen) {
        output.write(DOUBLE_QUOTE);
        state = State::StartTagOpen;
        if (!pendingRegistrations.empty()) {
            processDeferredRegistrations();
        }
    }
}

void XmlWriter::Impl::writeNamespace(const std::u16string& namespaceUri,
                                     const std::u16string& prefix)
{
    writeEndAttribute();
    if (state != State::StartTagOpen) {
        return;
    }
    const BindingCache::Place place = bindingCache.find(namespaceUri);
    if (!place.isBound) {
        bindUnused(place, namespaceUri, prefix);
        processDeferredRegistrations();
    }
}

void XmlWriter::Impl::processDeferredRegistrations()
{
    std::vector<std::u16string>& declared = elementStack.back().declaredNamespaces;
    while (!pendingRegistrations.empty()) {
        const auto [binding, isBound] = bindingCache.find(pendingRegistrations.front());
        if (!isBound) {
            pendingRegistrations.pop_front();
            continue;
        }
        declared.push_back(std::move(pendingRegistrations.front()));
        pendingRegistrations.pop_front();
        output.write(BLANK, qualify(binding->second, XMLNS_NAMESPACE, XMLNS_PREFIX), VALUE_START);
        state = State::AttributeOpen;
        writeEscaped(declared.back(), declared.back().size());
        output.write(DOUBLE_QUOTE);
        state = State::StartTagOpen;
    }
}

void XmlWriter::Impl::registerPrefix(const std::u16string& namespaceUri,
                                     const std::u16string& prefix)
{
    const BindingCache::Place place = bindingCache.find(namespaceUri);
    if (!place.isBound) {
        bind(place, namespaceUri, prefix);
    } else {
        queueDeclaration(namespaceUri, prefix);
    }
}

std::u16string XmlWriter::Impl::findUnusedPrefix(const std::u16string& prefix)
{
    if (!prefix.empty() && !usedPrefixes.contains(prefix)) {
        return prefix;
    }
    std::u16string candidate;
    do {
        candidate.assign(GENERATED_PREFIX_START).append(num_to_string(++prefixCounter));
    } while (usedPrefixes.contains(candidate));
    return candidate;
}

std::u16string XmlWriter::Impl::qualifyName(const std::u16string& localName,
                                            const std::u16string& namespaceUri,
                                            const std::u16string& prefix)
{
    std::u16string name;
    qualify(localName, namespaceUri, prefix).assignTo(name);
    return name;
}

QualifiedName XmlWriter::Impl::qualify(const std::u16string& localName,
                                       const std::u16string& namespaceUri,
                                       const std::u16string& prefix)
{
    if (namespaceUri.empty()) {
        return {NONE, localName};
    }
    const BindingCache::Place place = bindingCache.find(namespaceUri);
    const auto binding = place.isBound ? place.position : bindUnused(place, namespaceUri, prefix);
    return {binding->second, localName};
}

XmlWriter::Impl::Bindings::iterator XmlWriter::Impl::bindUnused(BindingCache::Place place,
                                                                const std::u16string& namespaceUri,
                                                                const std::u16string& prefix)
{
    return bind(place, namespaceUri, findUnusedPrefix(prefix));
}

XmlWriter::Impl::Bindings::iterator XmlWriter::Impl::bind(BindingCache::Place place,
                                                          const std::u16string& namespaceUri,
                                                          const std::u16string& prefix)
{
    Bindings::node_type node = spareBindings.take();
    if (!node.empty()) {
        node.key() = namespaceUri;
        node.mapped() = prefix;
    }
    const auto binding = node.empty() ? prefixMap.emplace_hint(place.position, namespaceUri, prefix)
                                      : prefixMap.insert(place.position, std::move(node));
    bindingCache.remember(binding);
    queueDeclaration(namespaceUri, prefix);
    return binding;
}

void XmlWriter::Impl::queueDeclaration(const std::u16string& namespaceUri,
                                       const std::u16string& prefix)
{
    std::u16string name = spareNames.take();
    name = namespaceUri;
    pendingRegistrations.push_back(std::move(name));
    std::set<std::u16string>::node_type node = sparePrefixes.take();
    if (node.empty()) {
        usedPrefixes.insert(prefix);
    } else {
        node.value() = prefix;
        usedPrefixes.insert(std::move(node));
    }
}

void XmlWriter::Impl::endBinding(const std::u16string& namespaceUri)
{
    const auto [binding, isBound] = bindingCache.find(namespaceUri);
    if (isBound) {
        bindingCache.forget(binding);
        sparePrefixes.put(usedPrefixes.extract(binding->second));
        spareBindings.put(prefixMap.extract(binding));
    }
}

void XmlWriter::Impl::writeEscaped(const std::u16string& value, std::size_t length)
{
    std::size_t position = 0;
    while (position < length) {
        output.compose(ESCAPING_MARGIN, [&](char16_t* out, char16_t* outLast) {
            const char16_t* const text = value.data();
            const EscapedRun run = escapeMarkup(text + position, text + length, out, outLast);
            position = static_cast<std::size_t>(run.read - text);
            return run.written;
        });
        if (position < length) {
            position = writeRun(value, position, length);
        }
    }
}

std::size_t XmlWriter::Impl::writeRun(const std::u16string& value, std::size_t position,
                                      std::size_t length)
{
    const std::u16string_view rest(value.data() + position, length - position);
    const char16_t* const special = findSpecial(rest.begin(), rest.end());
    const std::u16string_view run(rest.begin(), special);
    const std::size_t end = position + run.size();
    if (run.size() == value.size()) {
        output.write(value);
    } else if (!run.empty()) {
        output.write(run);
    }
    if (end == length) {
        return length;
    }
    writeReplacement(value[end]);
    return end + 1;
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
