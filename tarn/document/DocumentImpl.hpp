// Document::Impl: the state of a document that is being written, and the operations on it.
#pragma once

#include "tarn/document/AttributeNames.hpp"
#include "tarn/document/Bytes.hpp"
#include "tarn/document/checks.hpp"
#include "tarn/document/Document.hpp"
#include "tarn/document/Escaper.hpp"
#include "tarn/document/Output.hpp"
#include "tarn/document/Scopes.hpp"
#include "tarn/document/Value.hpp"

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::document {

/// Each operation first checks everything that it was given, and only then changes something. What
/// fails after that breaks the document off.
///
/// Where a value needs escaping, a writer does that; everything else is put together here.
class [[gnu::visibility("hidden")]] Document::Impl
{
public:
    /// Names an element: its depth, and the number that tells it from others at that depth.
    struct Handle
    {
        std::size_t depth;
        std::uint64_t number;
    };

    /// What an Error names: the path of the element at a depth, less one, and a name in it.
    struct Place
    {
        std::size_t depth = 0;
        const Name* name = nullptr;
        bool isAttribute = false;
    };

    Impl(detail::Output::Target target, Options options);

    /// Runs one of the operations below. Where that is refused, the Error names @p place.
    template <class Operation>
    void run(const Place& place, Operation operation)
    {
        try {
            operation();
        } catch (const detail::Refusal& refusal) {
            throwError(place, refusal);
        } catch (const Ended&) {
            throwError({open.size()}, {"the element has ended"});
        }
    }

    // The operations throw Refusal.

    void doctype(const Name& name, std::string_view publicId, std::string_view systemId);
    void comment(const Text& text);
    void instruction(const Name& target, const Text& data);
    /// Returns the number of the root.
    std::uint64_t root(const Name& name);
    void flush();
    void finish();
    /// Throws Refusal only if the target calls it.
    void reset();

    bool isOpen(Handle element) const
    {
        return element.depth < open.size() && open[element.depth].number == element.number;
    }
    void declare(Handle element, const Namespace& space);
    void attribute(Handle element, const Name& name, const Text& text);
    void text(Handle element, const Text& text);
    void base64(Handle element, const void* data, std::size_t size);
    void cdata(Handle element, const Text& text);
    void comment(Handle element, const Text& text);
    void instruction(Handle element, const Name& target, const Text& data);
    void raw(Handle element, std::string_view markup);
    std::uint64_t child(Handle element, const Name& name);
    void add(Handle element, const Name& name, const Text& text);
    void end(Handle element);
    /// As end(), for a destructor: what it meets is thrown by finish().
    void endInDestructor(Handle element) noexcept;

private:
    /// The Refusal of an operation on an element that has ended: its place is where the document
    /// is.
    struct Ended
    {
    };

    struct OpenElement
    {
        std::uint64_t number;
        /// Where its qualified name is in `names`.
        std::size_t nameBegin;
        std::size_t nameLength;
        /// Whether nothing may be added in it to lay it out.
        bool isMixed;
        bool hasPrefix;
        /// Whether its start tag has ended.
        bool hasContent = false;
        /// Whether the last thing in it stands on a line of its own.
        bool endsWithLine = false;
        /// Whether it declares anything.
        bool hasScope = false;
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

    /// Stands for a namespace that is in scope without a prefix, or none, where others have the
    /// number of their binding.
    static constexpr std::size_t NO_PREFIX = detail::Scopes::NOT_BOUND - 1;

    /// Runs the second half of an operation. If it does not succeed, the document is broken off.
    template <class Half>
    void change(Half half)
    {
        try {
            half();
            output.passOnIfFull();
        } catch (...) {
            stage = Stage::BrokenOff;
            throw;
        }
    }

    [[noreturn]] void throwError(const Place& place, const detail::Refusal& refusal);
    std::string pathTo(const Place& place);

    bool isInnermost(Handle element) const
    {
        return element.depth + 1 == open.size();
    }

    // These throw Refusal, or Ended.
    void requireUsable() const;
    void requireOpen(Handle element) const
    {
        if (stage != Stage::InRoot || !isOpen(element) || output.isHandingOver()) {
            refuseEnded();
        }
    }
    [[noreturn]] void refuseEnded() const;
    void requireOutsideRoot(const char* operation) const;
    /// @param space that of @p name, as far as it is in scope.
    void requireName(const Name& name, std::size_t space) const
    {
        if (name.isChecked()) {
            return;
        }
        detail::requireLocalName(name.localName());
        // What is in scope has been checked before.
        const bool isInScope = space != detail::Scopes::NOT_BOUND &&
                               prefixOf(space) == name.prefix() && !name.uri().empty();
        if (name.hasNamespace() && !isInScope) {
            detail::requireNamespace(name.uri(), name.prefix());
        }
    }
    void requireInstruction(const Name& target, const Text& data);

    std::string_view prefixOf(std::size_t space) const
    {
        return space == NO_PREFIX ? std::string_view() : scopes.prefixOf(space);
    }
    /// The namespace of an element with this name: the number of its binding, or NO_PREFIX;
    /// NOT_BOUND if it is not in scope in that way.
    std::size_t spaceOf(const Name& name)
    {
        if (!name.prefix().empty()) {
            return scopes.find(name.uri());
        }
        return scopes.defaultNamespace() == name.uri() ? NO_PREFIX : detail::Scopes::NOT_BOUND;
    }
    /// Brings a namespace that is not in scope there: binds it if it wishes a prefix, or else makes
    /// it the default one.
    std::size_t bringIntoScope(const Name& name);
    void beginScope();

    /// Ends the elements inside the one at @p depth.
    void endInside(std::size_t depth)
    {
        while (open.size() > depth + 1) {
            endInnermost();
        }
    }
    void endInnermost();
    /// Ends the elements inside the one at @p depth, and its start tag.
    void beginContent(std::size_t depth)
    {
        endInside(depth);
        if (!open.back().hasContent) {
            output.write(">");
            beginContentAsWritten();
        } else if (open.back().isInBase64) {
            writeBase64Rest();
        }
    }
    /// The same when what ends the start tag, if it is open, has been written.
    void beginContentAsWritten()
    {
        if (!open.back().hasContent) {
            open.back().hasContent = true;
            attributeNames.clear();
        }
    }
    /// The same for content around which no white space can be added.
    void beginMixed(std::size_t depth)
    {
        beginContent(depth);
        open.back().isMixed = true;
    }
    /// @param space what spaceOf() returns for @p name.
    void startElement(const Name& name, std::size_t space);
    /// Writes the declaration, unless there is to be none.
    void begin();
    /// Whether the layout and the content around allow that what comes next begins a line.
    bool canBeginLine() const;
    /// Whether what comes next, which is to be written now, begins a line.
    bool beginsLine();
    void beginLine();
    void writeDeclaration(std::string_view prefix, std::string_view uri);
    /// Writes the beginning of an attribute, to its first quote, after the end of the output. There
    /// is room for a short value and the other quote.
    /// @returns the place after it.
    char* putAttributeStart(std::size_t space, const Name& name);
    /// Writes a whole element after the end of the output.
    /// @returns the place after it; null if it takes more than that.
    char* putElement(const Name& name, std::string_view prefix, const Text& text);
    void writeValue(const detail::Referenced& referenced);
    void writeAttribute(std::size_t space, const Name& name);
    void writeCdata();
    void writeBase64(const unsigned char* data, std::size_t size);
    /// @param size a multiple of three.
    void writeWholeBase64(const unsigned char* data, std::size_t size);
    void writeBase64Rest();
    void writeComment();
    void writeInstruction(const Name& target);

    detail::Output output;
    const Options options;
    Stage stage = Stage::BeforeRoot;
    bool hasDoctype = false;
    /// Whether the declaration, if there is to be one, has been written.
    bool hasBegun = false;
    std::vector<OpenElement> open;
    /// The qualified names of the open elements, one after the other.
    detail::Bytes names;
    detail::Scopes scopes;
    /// The scopes around each open element that declares something.
    std::vector<detail::Scopes::Mark> outerScopes;
    detail::AttributeNames attributeNames;
    std::uint64_t lastNumber = 0;
    /// Up to two bytes that wait for a third.
    unsigned char base64Rest[3] = {};
    std::size_t base64RestSize = 0;
    std::exception_ptr metInDestructor;
    // Kept to reuse their storage.
    detail::Value value;
    detail::Escaper escaper;
};

} // namespace tarn::document
