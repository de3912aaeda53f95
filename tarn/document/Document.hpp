// Document and Element: writing XML documents that are checked. UTF-8 goes in, what would not be
// well-formed is refused, and a parser gives back what went in. This header is their manual; the
// guide, docs/guide.md, introduces them step by step and has every refusal in its tables.
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

/// What is added between elements to lay them out.
///
/// @see @ref layout-and-mixed-content
enum class Layout
{
    /// Each element, comment and instruction begins a line of its own (U+000A), with two spaces for
    /// each element around it. Nothing is added in an element once text, data, CDATA or raw markup,
    /// even empty, has been written in it or in an element around it.
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

/// How a Document is written.
struct Options
{
    Layout layout = Layout::indented; ///< What is added to lay the document out.
    /// What happens to text that XML 1.0 cannot hold. Names, identifiers and fragments are refused
    /// in any case.
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
/// Every operation throws Error, and then has written and changed nothing, if
/// - the element has ended or was moved from, or the document is finished or broken off;
/// - a name, or the name or prefix of a namespace, is none (see Name and Namespace);
/// - a text is ill-formed UTF-8 or UTF-16, has characters that XML 1.0 does not have, or is a null
///   pointer. The first two become U+FFFD instead with Unrepresentable::replace;
/// - its own description says so.
///
/// An Error that the stream has failed, and what the target or the allocator throws, breaks the
/// document off if a part of the operation has been written.
///
/// Each operation that returns the element has a form for temporaries, which returns it by value,
/// so that `Element entry = feed.child(ENTRY).attribute(DATE, day);` is safe.
///
/// @see @ref what-is-refused
class TARN_EXPORT Element
{
public:
    /// Takes over @p other, whose operations throw then.
    Element(Element&& other) noexcept
        : document(std::exchange(other.document, nullptr)), depth(other.depth),
          number(other.number), passingExceptions(other.passingExceptions)
    {
    }
    /// Ends the element that stood here before, unless @p other is inside it, and takes over @p
    /// other. If ending it fails, Document::finish() throws the exception.
    Element& operator=(Element&& other) noexcept;
    /// Ends the element, unless an exception that came after it is passing. If that fails,
    /// Document::finish() throws the exception.
    ~Element()
    {
        if (document != nullptr) {
            endUnlessPassing();
        }
    }

    /// Declares @p space on this element, for all that is inside. Does nothing if it is in scope
    /// already: as the default namespace if it wishes no prefix, with any prefix otherwise. If
    /// another namespace in scope uses the prefix, one is generated (`ns1`, `ns2`, ...).
    ///
    /// @throws Error after content, and for a default namespace that would change the namespace of
    /// this element.
    Element& declare(const Namespace& space) & TARN_LIFETIMEBOUND;
    /// @overload
    Element declare(const Namespace& space) && { return std::move(declare(space)); }

    /// Writes an attribute. Tabs, line feeds and carriage returns in @p value are written as
    /// references, so that a parser gives them back (XML 1.0, section 3.3.3).
    ///
    /// @throws Error after content, for a second attribute of the same namespace and local name,
    /// for a name in a namespace that wishes no prefix, and for `xmlns`.
    Element& attribute(const Name& name, const Text& value) & TARN_LIFETIMEBOUND;
    /// @overload
    Element attribute(const Name& name, const Text& value) &&
    {
        return std::move(attribute(name, value));
    }

    /// Writes @p text, escaped; calls in a row continue it. Carriage returns are written as
    /// references, so that a parser gives them back (XML 1.0, section 2.11). A character must not
    /// be divided between two calls.
    Element& text(const Text& text) & TARN_LIFETIMEBOUND;
    /// @overload
    Element text(const Text& text) && { return std::move(this->text(text)); }

    /// Writes @p size bytes in Base64 (RFC 4648, section 4), without line breaks. Calls in a row
    /// continue the same data.
    ///
    /// @throws Error if @p bytes is a null pointer and @p size is not 0.
    Element& base64(const void* bytes, std::size_t size) & TARN_LIFETIMEBOUND;
    /// @overload
    Element base64(const void* bytes, std::size_t size) &&
    {
        return std::move(base64(bytes, size));
    }

    /// Writes @p text as CDATA. `]]>` is split over two sections; a carriage return stands between
    /// two, as a reference.
    Element& cdata(const Text& text) & TARN_LIFETIMEBOUND;
    /// @overload
    Element cdata(const Text& text) && { return std::move(cdata(text)); }

    /// Writes a comment; `<!--` and `-->` are added without spaces.
    ///
    /// @throws Error if @p text has `--` or a carriage return, or ends in `-`.
    Element& comment(const Text& text) & TARN_LIFETIMEBOUND;
    /// @overload
    Element comment(const Text& text) && { return std::move(comment(text)); }

    /// Writes a processing instruction.
    ///
    /// @throws Error if @p target is `xml` in any case of letters or in a namespace, and if @p data
    /// has `?>` or a carriage return, or begins with white space.
    Element& instruction(const Name& target, const Text& data = "") & TARN_LIFETIMEBOUND;
    /// @overload
    Element instruction(const Name& target, const Text& data = "") &&
    {
        return std::move(instruction(target, data));
    }

    /// Writes @p fragment as it is.
    Element& raw(const Fragment& fragment) & TARN_LIFETIMEBOUND;
    /// @overload
    Element raw(const Fragment& fragment) && { return std::move(raw(fragment)); }

    /// Begins an element in this one. Its namespace is declared on it unless it is in scope: as the
    /// default namespace if it wishes no prefix, with a prefix as by declare() otherwise. A name in
    /// no namespace ends the default namespace with `xmlns=""`.
    Element child(const Name& name);

    /// Writes a whole element with @p text in this one, and returns this one. The element has a
    /// start and an end tag even if @p text is empty.
    Element& add(const Name& name, const Text& text) & TARN_LIFETIMEBOUND;
    /// @overload
    Element add(const Name& name, const Text& text) && { return std::move(add(name, text)); }

    /// Ends the element. One without content becomes an empty-element tag.
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

/// A document that is being written to a target. Only finish() completes it: when it has returned,
/// the document is well-formed XML 1.0 and namespace-well-formed (Namespaces in XML 1.0).
///
/// @code
///     constexpr tarn::document::Namespace ATOM{"http://www.w3.org/2005/Atom"};
///     constexpr tarn::document::Name FEED{ATOM, "feed"}, TITLE{ATOM, "title"};
///     std::string xml;
///     tarn::document::Document document(xml);
///     document.root(FEED).attribute("id", 7).add(TITLE, "a < b");
///     document.finish();
/// @endcode
/// leaves in `xml`
/// @code{.xml}
///     <?xml version="1.0" encoding="UTF-8"?>
///     <feed xmlns="http://www.w3.org/2005/Atom" id="7">
///       <title>a &lt; b</title>
///     </feed>
/// @endcode
///
/// **Refused calls.** A call that does not fit, or would make a document that is not well-formed,
/// throws Error and has written and changed nothing: the document can be used on.
///
/// **Broken-off documents.** If the target or the allocator throws, or the stream has failed, and a
/// part of the operation has been written, the document is broken off: every call but reset()
/// throws Error.
///
/// **Exceptions.** When an exception passes, destructors end no elements, and the destructor of the
/// document writes nothing. The end tag of the root reaches the target in finish() alone.
///
/// **Memory.** Text is passed on in batches of more than 8192 UTF-16 code units. Memory grows with
/// the depth of open elements and the namespaces in scope, not with the document, but for comments
/// and instructions after the root.
///
/// **Threads.** A document and its elements are used by one thread at a time. Different documents
/// share nothing that changes.
///
/// @see @ref a-checked-document
class TARN_EXPORT Document
{
public:
    /// Empties @p target, which must outlive the document and receives UTF-8. No text that is given
    /// to the document may be a view of it.
    explicit Document(std::string& target TARN_LIFETIMEBOUND, Options options = {});
    /// Appends UTF-8 to @p target, which must outlive the document.
    explicit Document(std::ostream& target TARN_LIFETIMEBOUND, Options options = {});
    /// Calls @p target with UTF-8, in portions that can end at any byte.
    ///
    /// @throws Error if @p target is empty.
    explicit Document(std::function<void(std::string_view)> target, Options options = {});
    Document(std::nullptr_t, Options = {}) = delete;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    /// Writes nothing: without finish() the document is not completed.
    ~Document();

    /// Writes a document type without an internal subset. Both identifiers can be left out, or the
    /// public one.
    ///
    /// @throws Error once the root has begun, after another document type, for a name in a
    /// namespace, for a public identifier without a system one or with characters that XML 1.0 does
    /// not allow in it (production 13), and for a system identifier with both kinds of quotes or a
    /// carriage return.
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
    /// @throws Error for a second root, and for a name that is none.
    Element root(const Name& name) TARN_LIFETIMEBOUND;

    /// Passes on everything written so far, in mid-document too, except the end tag of the root and
    /// what follows it; flushes a stream.
    ///
    /// @throws Error if the stream has failed; the document is broken off then.
    ///
    /// @see @ref where-a-document-goes
    void flush();

    /// Ends what is open, passes everything on, and flushes a stream. After it only reset() works.
    ///
    /// @throws Error if there is no root, the stream has failed, or the document is broken off; and
    /// the exception that a destructor has met.
    ///
    /// @see @ref exceptions-and-broken-off-documents
    void finish();

    /// Begins another document, in every state. The same calls give the same bytes as for the
    /// first. A string target is emptied; a stream or a function goes on. Elements of the document
    /// before have ended.
    void reset();

private:
    friend class Element;
    friend class Element::Access;
    class Impl;

    std::unique_ptr<Impl> impl;
};

} // namespace tarn::document
