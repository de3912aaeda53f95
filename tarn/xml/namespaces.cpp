// XmlWriter::Impl: namespace bindings, prefixes, qualified names and declarations.

#include "tarn/utils/num_to_string.hpp"
#include "tarn/xml/XmlWriterImpl.hpp"

#include <utility>

namespace tarn::utils {

using namespace detail;

void XmlWriter::Impl::writeNamespace(const std::u16string& namespaceUri,
                                     const std::u16string& prefix)
{
    writeEndAttribute();
    if (state != State::StartTagOpen) {
        return;
    }
    if (!isBound(reuse.index.find(namespaceUri))) {
        bindUnused(namespaceUri, prefix);
        processDeferredRegistrations();
    }
}

void XmlWriter::Impl::processDeferredRegistrations()
{
    std::vector<std::u16string>& declared = elementStack.back().declaredNamespaces;
    while (!pendingRegistrations.empty()) {
        const auto binding = reuse.index.find(pendingRegistrations.front());
        if (!isBound(binding)) {
            pendingRegistrations.pop_front();
            continue;
        }
        // Recorded before it is written: if writing fails, the binding still ends with the element.
        declared.push_back(std::move(pendingRegistrations.front()));
        pendingRegistrations.pop_front();
        openAttribute(qualify(binding->second, XMLNS_NAMESPACE, XMLNS_PREFIX));
        writeEscaped(declared.back());
        closeAttribute();
    }
}

void XmlWriter::Impl::registerPrefix(const std::u16string& namespaceUri,
                                     const std::u16string& prefix)
{
    if (!isBound(reuse.index.find(namespaceUri))) {
        bind(namespaceUri, prefix);
    } else {
        queueDeclaration(namespaceUri, prefix);
    }
}

std::u16string XmlWriter::Impl::findUnusedPrefix(const std::u16string& prefix)
{
    constexpr std::u16string_view GENERATED_PREFIX_START = u"ns";
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

XmlWriter::Impl::Binding XmlWriter::Impl::bindUnused(const std::u16string& namespaceUri,
                                                     const std::u16string& prefix)
{
    return bind(namespaceUri, findUnusedPrefix(prefix));
}

XmlWriter::Impl::Binding XmlWriter::Impl::bind(const std::u16string& namespaceUri,
                                               const std::u16string& prefix)
{
    reuse.index.reserve();
    Bindings::node_type node = reuse.bindings.take();
    if (!node.empty()) {
        node.key() = namespaceUri;
        node.mapped() = prefix;
    }
    const Binding binding = node.empty() ? prefixMap.emplace(namespaceUri, prefix).first
                                         : prefixMap.insert(std::move(node)).position;
    reuse.index.add(binding);
    queueDeclaration(namespaceUri, prefix);
    return binding;
}

void XmlWriter::Impl::queueDeclaration(const std::u16string& namespaceUri,
                                       const std::u16string& prefix)
{
    std::u16string name = reuse.namespaceNames.take();
    name = namespaceUri;
    pendingRegistrations.push_back(std::move(name));
    std::set<std::u16string>::node_type node = reuse.prefixes.take();
    if (node.empty()) {
        usedPrefixes.insert(prefix);
    } else {
        node.value() = prefix;
        usedPrefixes.insert(std::move(node));
    }
}

void XmlWriter::Impl::endBindings(StackItem& element)
{
    for (std::u16string& namespaceUri : element.declaredNamespaces) {
        // A name that was declared twice is no longer bound the second time.
        const auto binding = reuse.index.find(namespaceUri);
        if (isBound(binding)) {
            reuse.index.remove(binding);
            reuse.prefixes.put(usedPrefixes.extract(binding->second));
            reuse.bindings.put(prefixMap.extract(binding));
        }
        reuse.namespaceNames.put(std::move(namespaceUri));
    }
    element.declaredNamespaces.clear();
}

} // namespace tarn::utils
