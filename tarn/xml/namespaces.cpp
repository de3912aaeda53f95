// XmlWriter::Impl: namespace bindings, prefixes, qualified names and declarations.

#include "tarn/utils/num_to_string.hpp"
#include "tarn/xml/XmlWriterImpl.hpp"

#include <utility>

namespace tarn::utils {

using namespace detail;

void XmlWriter::Impl::writeNamespace(const std::u16string& namespaceUri,
                                     const std::u16string& prefix)
{
    finishAttribute();
    if (state != State::StartTagOpen) {
        return;
    }
    const auto [binding, hash] = reuse.index.find(namespaceUri);
    if (!isBound(binding)) {
        bindUnused(namespaceUri, prefix, hash);
        processDeferredRegistrations();
    }
}

void XmlWriter::Impl::processDeferredRegistrations()
{
    std::vector<std::u16string>& declared = elementStack.back().declaredNamespaces;
    if (declared.capacity() == 0) {
        declared = reuse.declaredNamespaces.take();
    }
    while (!pendingRegistrations.empty()) {
        const Binding binding =
            registrationOf(pendingRegistrations.front(), pendingRegistrations.size()).binding;
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
    const Registration registration = reuse.index.find(namespaceUri);
    if (!isBound(registration.binding)) {
        bind(namespaceUri, prefix, registration.hash);
    } else {
        reuse.registrations.giveUp(); // one binding with two records
        queueDeclaration(registration, prefix);
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
    appendPiece(qualify(localName, namespaceUri, prefix), name);
    return name;
}

XmlWriter::Impl::Binding XmlWriter::Impl::bindUnused(const std::u16string& namespaceUri,
                                                     const std::u16string& prefix,
                                                     std::uint32_t hash)
{
    return bind(namespaceUri, findUnusedPrefix(prefix), hash);
}

XmlWriter::Impl::Binding XmlWriter::Impl::bind(const std::u16string& namespaceUri,
                                               const std::u16string& prefix, std::uint32_t hash)
{
    reuse.index.reserve();
    reuse.registrations.reserve();
    Bindings::node_type node = reuse.bindings.take();
    if (!node.empty()) {
        node.key() = namespaceUri;
        node.mapped() = prefix;
    }
    const Binding binding = node.empty() ? prefixMap.emplace(namespaceUri, prefix).first
                                         : prefixMap.insert(std::move(node)).position;
    reuse.index.add({binding, hash});
    queueDeclaration({binding, hash}, prefix);
    return binding;
}

void XmlWriter::Impl::queueDeclaration(const Registration& registration,
                                       const std::u16string& prefix)
{
    std::u16string name = reuse.namespaceNames.take();
    name = registration.binding->first;
    pendingRegistrations.push_back(std::move(name));
    reuse.registrations.push(registration);
    std::set<std::u16string>::node_type node = reuse.prefixes.take();
    if (node.empty()) {
        usedPrefixes.insert(prefix);
    } else {
        node.value() = prefix;
        usedPrefixes.insert(std::move(node));
    }
}

XmlWriter::Impl::Registration XmlWriter::Impl::registrationOf(const std::u16string& namespaceUri,
                                                              std::size_t fromTop)
{
    const Registration* const known = reuse.registrations.fromTop(fromTop);
    return known != nullptr ? *known : reuse.index.find(namespaceUri);
}

void XmlWriter::Impl::endBindings(StackItem& element)
{
    if (!pendingRegistrations.empty()) {
        reuse.registrations.giveUp(); // the element's are not on top
    }
    const std::size_t count = element.declaredNamespaces.size();
    std::size_t fromTop = count;
    for (std::u16string& namespaceUri : element.declaredNamespaces) {
        // A name that was declared twice is no longer bound the second time.
        const Registration registration = registrationOf(namespaceUri, fromTop--);
        if (isBound(registration.binding)) {
            reuse.index.remove(registration);
            reuse.prefixes.put(usedPrefixes.extract(registration.binding->second));
            reuse.bindings.put(prefixMap.extract(registration.binding));
        }
        reuse.namespaceNames.put(std::move(namespaceUri));
    }
    reuse.registrations.pop(count);
    element.declaredNamespaces.clear();
}

} // namespace tarn::utils
