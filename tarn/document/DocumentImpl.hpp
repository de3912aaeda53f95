// Document::Impl: the state of a document that is being written, and the operations on it.
#pragma once

#include "tarn/document/AttributeNames.hpp"
#include "tarn/document/Document.hpp"
#include "tarn/document/Scopes.hpp"
#include "tarn/document/Value.hpp"
#include "tarn/xml/XmlWriter.hpp"

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarn::document {

/// Each operation first checks everything that it was given, and only then changes something. What
/// fails after that breaks the document off.
///
/// Markup is put together in `batch`; a writer over this string escapes the values. Full batches
/// are converted and handed to the target.
class Document::Impl
{
public:
    using Target = std::variant<std::string*, std::ostream*, std::function<void(std::string_view)>>;

    Impl(Target target, Options options);

    void doctype(const Name& name, std::string_view publicId, std::string_view systemId);
    void comment(const Text& text);
    void instruction(const Name& target, const Text& data);
    /// Returns the number of the root.
    std::uint64_t root(const Name& name);
    void flush();
    void finish();
    void reset();

    /// Names an element: its depth, and the number that tells it from others at that depth.
    struct Handle
    {
        std::size_t depth;
        std::uint64_t number;
    };

    bool isOpen(Handle element) const;
    void declare(Handle element, const Namespace& space);
    void attribute(Handle element, const Name& name, const Text& text);
    void text(Handle element, const Text& text);
    void base64(Handle element, const void* data, std::size_t size);
    void cdata(Handle element, const Text& text);
    void comment(Handle element, const Text& text);
    void instruction(Handle element, const Name& target, const Text& data);
    void raw(Handle element, const std::u16string& markup);
    std::uint64_t child(Handle element, const Name& name);
    void add(Handle element, const Name& name, const Text& text);
    void end(Handle element);
    /// As end(), for a destructor: what it meets is thrown by finish().
    void endInDestructor(Handle element) noexcept;

private:
    struct OpenElement
    {
        std::uint64_t number;
        /// Where its qualified name begins in `names`.
        std::size_t name;
        /// The scopes around it.
        detail::Scopes::Mark outer;
        /// Whether its start tag has ended.
        bool hasContent = false;
        /// Whether nothing may be added in it to lay it out.
        bool isMixed = false;
        /// Whether the last thing in it stands on a line of its own.
        bool endsWithLine = false;
        bool hasPrefix = false;
        bool declaresDefault = false;
        /// Whether its data in Base64 can be continued.
        bool isInBase64 = false;
    };

    enum class Stage
    {
        BeforeRoot,
        InRoot,
        AfterRoot,
        Finished,
        BrokenOff,
    };

    /// What an Error names: the path of the element at a depth, less one, and a name in it.
    struct Place
    {
        std::size_t depth;
        const Name* name = nullptr;
        bool isAttribute = false;
    };

    /// Runs @p check, which may refuse the call.
    template <class Check>
    auto checked(const Place& place, Check check);
    /// Runs @p change, which breaks the document off if it throws.
    template <class Change>
    void change(Change change);
    std::string pathTo(const Place& place) const;

    // These throw Refusal.
    void requireUsable() const;
    void requireOpen(Handle element);
    static void requireName(const Name& name);
    static void requireComment(const std::u16string& text);
    void requireInstruction(const Name& target, const Text& data);
    static void requireIdentifiers(std::string_view publicId, std::string_view systemId);

    /// Ends the elements inside the one at @p depth, and its start tag.
    void beginContent(std::size_t depth);
    /// The same for content around which no white space can be added.
    void beginMixed(std::size_t depth);
    /// Ends the elements inside the one at @p depth.
    void endInside(std::size_t depth);
    void endInnermost();
    /// Begins a line at @p depth unless the layout or the content around forbids it. Before the
    /// first, writes the declaration.
    void beginLine(std::size_t depth);
    void startElement(const Name& name);
    void writeDeclaration(std::string_view prefix, std::string_view uri);
    void writeBase64(unsigned first, unsigned second, unsigned third);
    void writeBase64Rest();
    void writeComment();
    void writeInstruction(const Name& target);
    void append(std::string_view ascii);
    void appendName(std::string_view prefix, std::string_view localName);
    void passOnIfFull();
    void passOn(std::size_t length);
    void flushStream(std::ostream& stream);
    void requireGood(const std::ostream& stream) const;

    Target target;
    const Options options;
    Stage stage = Stage::BeforeRoot;
    bool hasDoctype = false;
    /// Whether the declaration, if there is to be one, has been written.
    bool hasBegun = false;
    std::u16string batch;
    utils::XmlWriter writer;
    /// Once the root has ended: where in `batch` its end tag begins, which waits for finish().
    std::size_t heldFrom = 0;
    std::vector<OpenElement> open;
    /// The qualified names of the open elements, one after the other.
    std::u16string names;
    detail::Scopes scopes;
    detail::AttributeNames attributeNames;
    std::uint64_t lastNumber = 0;
    /// Up to two bytes that wait for a third.
    unsigned char base64Rest[2] = {};
    std::size_t base64RestSize = 0;
    std::exception_ptr metInDestructor;
    // Kept to reuse their storage.
    detail::Value value;
    std::u16string uriUnits;
    std::string bytes;
};

} // namespace tarn::document
