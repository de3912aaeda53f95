// Writing XML documents that cannot go wrong: UTF-8 goes in, every mistake is refused, and a parser
// gives back what went in.
#pragma once

#include "tarn/document/Error.hpp"
#include "tarn/document/Fragment.hpp"
#include "tarn/document/Name.hpp"
#include "tarn/document/Text.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#ifdef __clang__
#define TARN_LIFETIMEBOUND [[clang::lifetimebound]]
#else
#define TARN_LIFETIMEBOUND
#endif

namespace tarn::document {

enum class Layout
{
    /// Each element, comment and instruction on a line of its own, two spaces for each element
    /// around it. Nothing is added in an element once text, data, CDATA or raw markup, even empty,
    /// has been written in it or in an element around it.
    indented,
    /// Not one white space is added.
    none,
};

/// What happens to text that XML 1.0 cannot hold: characters that it does not have, and ill-formed
/// UTF.
enum class Unrepresentable
{
    refuse,  ///< The call throws Error.
    replace, ///< Each becomes U+FFFD.
};

struct Options
{
    Layout layout = Layout::indented;
    Unrepresentable unrepresentable = Unrepresentable::refuse;
    /// Whether the document begins with `<?xml version="1.0" encoding="UTF-8"?>`.
    bool declaration = true;
};

class Document;

/// An element of a document that is being written. Its end is written by end(), by the destructor,
/// or by the next operation on an element around it. It must not outlive its Document.
///
/// Every operation first ends the elements inside this one that are still open.
///
/// Every operation throws Error, and then changes nothing, if the element has ended or was moved
/// from, and where its own description says so.
class TARN_EXPORT Element
{
public:
    Element(Element&& other) noexcept
        : document(std::exchange(other.document, nullptr)), depth(other.depth),
          number(other.number), passingExceptions(other.passingExceptions)
    {
    }
    /// Ends the element that stood here before.
    Element& operator=(Element&& other) noexcept;
    /// Ends the element, unless an exception that came after it is passing. If that fails,
    /// Document::finish() throws the exception.
    ~Element()
    {
        if (document != nullptr) {
            endUnlessPassing();
        }
    }

    /// Declares @p space on this element, for all that is inside.
    ///
    /// @throws Error after content, if the namespace is not allowed, and for a default namespace if
    /// that would
    ///     change the namespace of this element.
    Element& declare(const Namespace& space) & TARN_LIFETIMEBOUND;
    Element declare(const Namespace& space) && { return std::move(declare(space)); }

    /// @throws Error after content, for a second attribute of the same name, and for a name in a
    /// namespace
    ///     that wishes no prefix.
    Element& attribute(const Name& name, const Text& value) & TARN_LIFETIMEBOUND;
    Element attribute(const Name& name, const Text& value) &&
    {
        return std::move(attribute(name, value));
    }

    Element& text(const Text& text) & TARN_LIFETIMEBOUND;
    Element text(const Text& text) && { return std::move(this->text(text)); }

    /// Writes @p size bytes in Base64 (RFC 4648). Calls in a row continue the same data.
    Element& base64(const void* bytes, std::size_t size) & TARN_LIFETIMEBOUND;
    Element base64(const void* bytes, std::size_t size) &&
    {
        return std::move(base64(bytes, size));
    }

    /// Writes @p text as CDATA. `]]>` is split over two sections; a carriage return stands between
    /// two, as a reference.
    Element& cdata(const Text& text) & TARN_LIFETIMEBOUND;
    Element cdata(const Text& text) && { return std::move(cdata(text)); }

    /// @throws Error if @p text has `--` or a carriage return, or ends in `-`.
    Element& comment(const Text& text) & TARN_LIFETIMEBOUND;
    Element comment(const Text& text) && { return std::move(comment(text)); }

    /// Writes a processing instruction.
    ///
    /// @throws Error if @p target is `xml` in any case of letters or in a namespace, and if @p data
    /// has `?>` or
    ///     a carriage return, or begins with white space.
    Element& instruction(const Name& target, const Text& data = "") & TARN_LIFETIMEBOUND;
    Element instruction(const Name& target, const Text& data = "") &&
    {
        return std::move(instruction(target, data));
    }

    Element& raw(const Fragment& fragment) & TARN_LIFETIMEBOUND;
    Element raw(const Fragment& fragment) && { return std::move(raw(fragment)); }

    /// Begins an element in this one.
    Element child(const Name& name);

    /// Writes a whole element with @p text in this one, and returns this one.
    Element& add(const Name& name, const Text& text) & TARN_LIFETIMEBOUND;
    Element add(const Name& name, const Text& text) && { return std::move(add(name, text)); }

    void end();

private:
    friend class Document;
    class Access;

    Element(Document& document, std::size_t depth, std::uint64_t number) noexcept;

    void endUnlessPassing() noexcept;

    Document* document;
    std::size_t depth;
    /// Tells this element from others that have stood at the same depth.
    std::uint64_t number;
    int passingExceptions;
};

/// A document that is being written to a target. Only finish() completes it.
///
/// If anything else than Error is thrown, by the target or for want of memory, and some of the
/// operation has been written, the document is broken off: every call but reset() throws Error.
class TARN_EXPORT Document
{
public:
    /// Empties @p target, which must outlive the document and receives UTF-8.
    explicit Document(std::string& target TARN_LIFETIMEBOUND, Options options = {});
    /// Appends UTF-8 to @p target, which must outlive the document.
    explicit Document(std::ostream& target TARN_LIFETIMEBOUND, Options options = {});
    /// Calls @p target with UTF-8, in portions that end at any byte.
    explicit Document(std::function<void(std::string_view)> target, Options options = {});
    Document(std::nullptr_t, Options = {}) = delete;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document();

    /// Writes a document type. Either identifier can be left out, but not the system one alone.
    ///
    /// @throws Error after the root or another document type, and for identifiers that are not
    /// allowed.
    void doctype(const Name& name, std::string_view publicId = {}, std::string_view systemId = {});

    /// Writes a comment before or after the root.
    ///
    /// @throws Error while the root is open, and as Element::comment().
    void comment(const Text& text);
    /// Writes a processing instruction before or after the root.
    ///
    /// @throws Error while the root is open, and as Element::instruction().
    void instruction(const Name& target, const Text& data = "");

    /// Begins the root element.
    ///
    /// @throws Error for a second root, and as Element::child().
    Element root(const Name& name) TARN_LIFETIMEBOUND;

    /// Passes on everything written so far, except the end tag of the root and what follows it.
    void flush();

    /// Ends what is open and passes everything on. After it only reset() works.
    ///
    /// @throws Error if there is no root or the target has failed, and what a destructor has met.
    void finish();

    /// Begins another document. The same calls give the same bytes as for the first. A string
    /// target is emptied; a stream or a function goes on.
    void reset();

private:
    friend class Element;
    friend class Element::Access;
    class Impl;

    std::unique_ptr<Impl> impl;
};

} // namespace tarn::document
