// XmlWriter::Impl: the writer's whole state and the operations on it.
//
// The operations are defined by subject: markup.cpp has elements, attributes and text,
// namespaces.cpp has bindings, prefixes, qualified names and declarations.
#pragma once

#include "tarn/xml/BindingIndex.hpp"
#include "tarn/xml/constants.hpp"
#include "tarn/xml/PieceOutput.hpp"
#include "tarn/xml/RegistrationStack.hpp"
#include "tarn/xml/Sink.hpp"
#include "tarn/xml/Spares.hpp"
#include "tarn/xml/XmlWriter.hpp"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::utils {

/// The implementation of XmlWriter. The operations that XmlWriter has too are documented there.
///
/// No argument may be the string that the sink appends to: XmlWriter sees to that.
///
/// If an operation throws, the state keeps what the operation had changed by then. Text and state
/// stay in step, piece by piece.
class TARN_EXPORT XmlWriter::Impl
{
public:
    explicit Impl(std::unique_ptr<Sink>&& sink);

    void writeStartDocument(const std::u16string& version);
    void writeEndDocument();
    void writeRawXml(const std::u16string& xml);
    void writeValue(const std::u16string& value);

    void writeStartElement(const std::u16string& localName, const std::u16string& namespaceUri,
                           const std::u16string& prefix);
    void writeStartElementClose();
    void writeEndElement();
    void writeElement(const std::u16string& localName, const std::u16string& namespaceUri,
                      const std::u16string& prefix, const std::u16string& value);
    void writeEmptyElement(const std::u16string& localName, const std::u16string& namespaceUri,
                           const std::u16string& prefix);

    void writeStartAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                             const std::u16string& prefix);
    void writeEndAttribute();
    void writeAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                        const std::u16string& prefix, const std::u16string& value);
    void writeNamespace(const std::u16string& namespaceUri, const std::u16string& prefix);

    /// Writes the declaration of every queued namespace name, oldest first, onto the start tag that
    /// is open, and records each on its element. A name whose binding has gone is skipped. A start
    /// tag must be open, with no attribute value open in it.
    void processDeferredRegistrations();

    /// Binds @p namespaceUri to @p prefix (empty for the default namespace) unless it is bound
    /// already, and queues its declaration in either case. Writes nothing.
    void registerPrefix(const std::u16string& namespaceUri, const std::u16string& prefix);

    /// Returns @p prefix if it is neither empty nor in use, and the next free generated one
    /// otherwise. The result is not yet in use.
    std::u16string findUnusedPrefix(const std::u16string& prefix);

    /// Returns the name to write for the given local name, namespace name and preferred prefix.
    /// Binds the namespace name, and queues its declaration, if it is not bound yet. Writes
    /// nothing.
    std::u16string qualifyName(const std::u16string& localName, const std::u16string& namespaceUri,
                               const std::u16string& prefix);

    /// Whether the sink appends to a string of the caller's.
    bool isOverTarget() const { return output.isOverTarget(); }
    /// Whether @p argument is that string.
    bool isTarget(const std::u16string& argument) const { return output.isTarget(argument); }
    /// While the result exists, that string is written to in place. It must not be used meanwhile.
    detail::PieceOutput::Operation openTarget() { return detail::PieceOutput::Operation(output); }

private:
    struct StackItem
    {
        /// The qualified name as written in the start tag; the end tag repeats it.
        std::u16string name;
        /// The namespace names declared on the start tag, in the order written. Their bindings end
        /// with the element.
        std::vector<std::u16string> declaredNamespaces;
    };

    /// The point that the writer has reached in the markup.
    enum class State : std::int32_t
    {
        AttributeOpen, ///< Inside an attribute value: its opening quote is the last quote written.
        StartTagOpen,  ///< Inside a start tag, where attributes may follow.
        AfterStartTag, ///< In an element's content, before any end tag in it.
        AfterEndTag,   ///< After an end tag or an empty-element tag, or before the first start tag.
    };

    using Bindings = detail::BindingIndex::Bindings;
    using Binding = detail::BindingIndex::Binding;
    using Registration = detail::BindingIndex::Entry;

    // As writeStartElementClose() and writeEndAttribute(), inline where these write nothing.
    void finishStartTag();
    void finishAttribute();

    void closeStartTag();
    void endAttribute();
    void prepareLongName(detail::QualifiedName name);
    /// Writes the start of an attribute up to its opening quote.
    void openAttribute(detail::QualifiedName name);
    /// Writes the closing quote of the open attribute value.
    void closeAttribute();

    detail::EscapedValue escaped(const std::u16string& value) const
    {
        return {value, isDefaultVersion ? detail::REPLACEMENTS_OF_XML_1_0 : detail::REPLACEMENTS};
    }
    /// Writes @p value with the special code units replaced.
    void writeEscaped(const std::u16string& value);
    void writeLongEscaped(const std::u16string& value);
    /// Writes some code units from the beginning of @p rest, if there is room for them. Returns how
    /// many.
    std::size_t writeStep(std::u16string_view rest, const detail::Replacements& replacements);
    /// Writes from the beginning of @p rest, the rest of @p value, up to its first special code
    /// unit and the replacement of that. Returns what follows.
    std::u16string_view writeRun(const std::u16string& value, std::u16string_view rest);
    void writeReplacement(char16_t special);

    /// Returns the prefix of names in @p namespaceUri if they can be written at once, because the
    /// namespace is bound and no declaration is queued; null otherwise.
    const std::u16string* settledPrefix(const std::u16string& namespaceUri);
    detail::QualifiedName qualify(const std::u16string& localName,
                                  const std::u16string& namespaceUri, const std::u16string& prefix);
    /// Binds @p namespaceUri, which is not bound yet, and queues its declaration.
    ///
    /// @param hash as the index has given it with the answer that the name is not bound.
    Binding bind(const std::u16string& namespaceUri, const std::u16string& prefix,
                 std::uint32_t hash);
    /// As above, to @p prefix if it is not in use, or else to a generated one.
    Binding bindUnused(const std::u16string& namespaceUri, const std::u16string& prefix,
                       std::uint32_t hash);
    bool isBound(Binding binding) const { return binding != prefixMap.end(); }
    /// Queues the declaration of a name that is bound and marks @p prefix as used.
    void queueDeclaration(const Registration& registration, const std::u16string& prefix);
    /// Returns the registration of @p namespaceUri, which stands in the stack at @p fromTop.
    Registration registrationOf(const std::u16string& namespaceUri, std::size_t fromTop);
    /// Ends the bindings that were declared on @p element.
    void endBindings(StackItem& element);

    /// Where all output goes. Owned, never null.
    std::unique_ptr<Sink> sink;
    /// The open elements, outermost first. Empty only in state AfterEndTag.
    std::deque<StackItem> elementStack;
    /// The bindings in scope: namespace name to prefix, which is empty for the default namespace.
    Bindings prefixMap;
    /// The prefixes that registrations have bound. `xml` and `xmlns`, which are bound from the
    /// start, are not among them.
    std::set<std::u16string> usedPrefixes;
    /// Namespace names whose declarations are still to be written, oldest first. A name can be here
    /// more than once, and can outlive its binding.
    std::deque<std::u16string> pendingRegistrations;
    /// The number in the last generated prefix that was tried. It only grows, so that a generated
    /// prefix never means two things in one document.
    std::uint64_t prefixCounter = 0;
    State state = State::AfterEndTag;
    /// Whether the last XML declaration gave DEFAULT_VERSION, in which case control characters that
    /// XML 1.0 cannot represent are left out.
    bool isDefaultVersion = false;

    /// Appends pieces in place where it can, else hands them to `sink`.
    detail::PieceOutput output;

    /// Makes elements and bindings cheap: nothing here changes what is written.
    struct Reuse
    {
        explicit Reuse(Bindings& prefixMap) : index(prefixMap) {}

        /// Elements mostly end before the next one begins, each with a namespace or two declared on
        /// it. So a few spare objects of each kind serve documents of any length.
        static constexpr std::size_t SPARES = 4;

        detail::BindingIndex index;
        detail::RegistrationStack registrations;
        /// elementStack.size(), which a deque has to compute.
        std::size_t depth = 0;
        /// The name of an element that is being written, if a string cannot hold it without an
        /// allocation.
        std::u16string longName;
        detail::Spares<std::u16string, SPARES> elementNames;
        // Elements with declarations are rarer.
        detail::Spares<std::vector<std::u16string>, SPARES / 2> declaredNamespaces;
        detail::Spares<Bindings::node_type, SPARES> bindings;
        detail::Spares<std::set<std::u16string>::node_type, SPARES> prefixes;
        detail::Spares<std::u16string, SPARES> namespaceNames;
    };
    Reuse reuse;
};

inline void XmlWriter::Impl::finishAttribute()
{
    if (state == State::AttributeOpen) {
        endAttribute();
    }
}

inline void XmlWriter::Impl::closeStartTag()
{
    output.write(detail::TAG_END);
    state = State::AfterStartTag;
}

inline void XmlWriter::Impl::finishStartTag()
{
    finishAttribute();
    if (state == State::StartTagOpen) {
        closeStartTag();
    }
}

inline const std::u16string* XmlWriter::Impl::settledPrefix(const std::u16string& namespaceUri)
{
    if (!pendingRegistrations.empty()) {
        return nullptr;
    }
    if (namespaceUri.empty()) {
        return &detail::NONE;
    }
    const Binding binding = reuse.index.find(namespaceUri).binding;
    return isBound(binding) ? &binding->second : nullptr;
}

inline detail::QualifiedName XmlWriter::Impl::qualify(const std::u16string& localName,
                                                      const std::u16string& namespaceUri,
                                                      const std::u16string& prefix)
{
    if (namespaceUri.empty()) {
        return {detail::NONE, localName};
    }
    auto [binding, hash] = reuse.index.find(namespaceUri);
    if (!isBound(binding)) {
        // Out of line: its local strings would add a stack-protector check to every name.
        binding = bindUnused(namespaceUri, prefix, hash);
    }
    return {binding->second, localName};
}

} // namespace tarn::utils
