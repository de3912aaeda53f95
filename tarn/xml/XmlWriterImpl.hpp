// XmlWriter::Impl: the writer's whole state and the operations on it.
#pragma once

#include "tarn/xml/BindingCache.hpp"
#include "tarn/xml/PieceOutput.hpp"
#include "tarn/xml/Sink.hpp"
#include "tarn/xml/Spares.hpp"
#include "tarn/xml/XmlWriter.hpp"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tarn::utils {

/// The implementation of XmlWriter. The operations that XmlWriter has too are documented there.
///
/// If an operation throws, the state keeps what the operation had changed by then: text and state
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

    void writeStartAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                             const std::u16string& prefix);
    void writeEndAttribute();
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

private:
    /// An element that has been started and not ended.
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

    using Bindings = BindingCache::Bindings;

    QualifiedName qualify(const std::u16string& localName, const std::u16string& namespaceUri,
                          const std::u16string& prefix);
    /// Binds @p namespaceUri, which is not bound yet, and queues its declaration.
    Bindings::iterator bind(BindingCache::Place place, const std::u16string& namespaceUri,
                            const std::u16string& prefix);
    /// As above, to @p prefix if it is not in use, or else to a generated one. Not inline, so that
    /// names in bound namespaces do not pay for guarding its strings.
    [[gnu::noinline]] Bindings::iterator bindUnused(BindingCache::Place place,
                                                    const std::u16string& namespaceUri,
                                                    const std::u16string& prefix);
    /// Queues the declaration of @p namespaceUri and marks @p prefix as used.
    void queueDeclaration(const std::u16string& namespaceUri, const std::u16string& prefix);
    void endBinding(const std::u16string& namespaceUri);

    /// Writes the first @p length code units of @p value with the special ones replaced. They are
    /// read by index: they move if @p value is the very string that the sink appends to.
    void writeEscaped(const std::u16string& value, std::size_t length);
    /// Writes from @p position to the next special code unit and its replacement, and returns the
    /// position after it.
    std::size_t writeRun(const std::u16string& value, std::size_t position, std::size_t length);
    void writeReplacement(char16_t special);

    /// Where all output goes. Owned, never null.
    std::unique_ptr<Sink> sink;
    /// The open elements, outermost first. Empty only in state AfterEndTag.
    std::deque<StackItem> elementStack;
    /// The bindings in scope: namespace name to prefix, which is empty for the default namespace.
    Bindings prefixMap;
    /// The prefixes that registrations have bound. The two that are bound from the start are not
    /// here.
    std::set<std::u16string> usedPrefixes;
    /// Namespace names whose declarations are still to be written, oldest first. A name may be here
    /// more than once, and may have outlived its binding.
    std::deque<std::u16string> pendingRegistrations;
    /// The number in the last generated prefix that was tried. It only grows, so that a generated
    /// prefix never means two things in one document.
    std::uint64_t prefixCounter = 0;
    State state = State::AfterEndTag;
    /// Whether the last declaration gave DEFAULT_VERSION, in which case control characters that XML
    /// 1.0 cannot represent are left out.
    bool isDefaultVersion = false;

    /// The way of the pieces to `sink`; holds no text between operations.
    PieceOutput output;
    BindingCache bindingCache;
    Spares<StackItem, 4> spareItems;
    Spares<Bindings::node_type, 4> spareBindings;
    Spares<std::set<std::u16string>::node_type, 4> sparePrefixes;
    Spares<std::u16string, 4> spareNames;
};

} // namespace tarn::utils
