// XmlWriter: a streaming, namespace-aware writer of XML text. This header is its manual; the guide,
// docs/guide.md, introduces it step by step (installed as share/doc/libtarn-utils-dev/guide.md).
#pragma once

#include "tarn/export.hpp"

#include <iosfwd>
#include <string>
#include <utility>

namespace tarn::utils {

/// Writes an XML document from a sequence of calls.
///
/// @code
///     std::string xml;
///     tarn::utils::XmlWriter writer(xml);
///     writer.writeStartDocument();
///     writer.writeStartElement(u"feed", u"http://www.w3.org/2005/Atom", u"atom");
///     writer.writeAttribute(u"id", u"7");
///     writer.writeElement(u"title", u"a < b");
///     writer.writeEndDocument();
/// @endcode
/// leaves in `xml`
/// @code{.xml}
///     <?xml version="1.0" encoding="UTF-8"?>
///     <atom:feed xmlns:atom="http://www.w3.org/2005/Atom" id="7">
///       <title>a &lt; b</title>
///     </atom:feed>
/// @endcode
///
/// **Text.** Every string is UTF-16 in `std::u16string`; an empty one stands for none (no
/// namespace, no preferred prefix). Surrogates need not be paired: a `std::u16string` target
/// receives them as they are, and the two UTF-8 targets receive U+FFFD for each surrogate that has
/// no other half. The halves of a pair can be written by two calls. An argument can be the target
/// string itself: its value is the one that it had when the call began.
///
/// **Names.** An element or attribute is named by its local name, its namespace name and the prefix
/// that the caller would like (Namespaces in XML 1.0). The writer binds a prefix to a namespace
/// name when that is first used, declares it on the start tag that is open then, and removes the
/// binding when that element ends. It takes the preferred prefix if no binding in scope uses it.
/// Otherwise, and when no prefix is preferred, it generates `ns1`, `ns2`, ... A namespace name that
/// is already bound keeps its prefix, whatever prefix is preferred. The prefix `xml` is bound from
/// the start.
///
/// **Layout.** Each start tag begins a new line, indented by two spaces for each open element. An
/// end tag begins a new line if the last tag inside the element was an end tag or an empty-element
/// tag, and follows the text otherwise. Lines end in U+000A. Nothing follows the last end tag.
///
/// **State.** An attribute value or a start tag that is open is closed by the next call that needs
/// it closed. A call that does not fit the state (an attribute after the start tag has been closed,
/// an end without a start) is ignored.
///
/// **What is not checked.** The writer escapes values and namespace names. It writes names, the
/// declared version and raw text as they are given; that these are well-formed is up to the caller.
///
/// **Completion.** The destructor writes nothing. On the two UTF-8 targets text is converted in
/// batches of more than 8192 UTF-16 code units, so the output is complete only after
/// `writeEndDocument`.
///
/// **Failure.** The writer throws no exceptions of its own. Exceptions of the allocator, the
/// converter or the caller's stream pass through. What was written before stays written, and the
/// writer can still be used or destroyed. The writer does not notice a stream that fails without
/// throwing: check the stream.
///
/// **Threads.** A writer is used by one thread at a time. Different writers share nothing that
/// changes.
class TARN_EXPORT XmlWriter
{
public:
    /// The writer's whole state; private to the library.
    class Impl;

    /// The version `1.0`. Declaring exactly this version makes `writeValue` leave out the control
    /// characters that XML 1.0 cannot represent.
    /// @see @ref control-characters-and-versions
    static const std::u16string DEFAULT_VERSION;

    /// Writes UTF-16 to @p output, which is emptied now and receives each piece of text at once.
    /// @p output must outlive the writer.
    /// @see @ref targets-and-when-text-reaches-them
    explicit XmlWriter(std::u16string& output);

    /// Writes UTF-8 to @p output, which is emptied now and receives text in batches of more than
    /// 8192 UTF-16 code units and at `writeEndDocument`. @p output must outlive the writer.
    /// @see @ref targets-and-when-text-reaches-them
    explicit XmlWriter(std::string& output);

    /// Writes UTF-8 to @p output, with formatted insertion (`<<`), in batches of more than 8192
    /// UTF-16 code units and at `writeEndDocument`, which also flushes the stream. The text follows
    /// what the stream already holds. @p output must outlive the writer.
    /// @see @ref targets-and-when-text-reaches-them
    explicit XmlWriter(std::ostream& output);

    /// Frees the writer's state and writes nothing: open elements stay open. On the two UTF-8
    /// targets, text written since the last batch or `writeEndDocument` is lost.
    /// @see @ref what-is-lost-without-writeenddocument
    ~XmlWriter();

    XmlWriter(const XmlWriter&) = delete;
    XmlWriter& operator=(const XmlWriter&) = delete;

    /// Takes over the document of @p other, which can then only be destroyed or assigned to. Any
    /// other call on it is undefined; in builds of the library with assertions (without `NDEBUG`)
    /// it ends the program and says why.
    XmlWriter(XmlWriter&& other) noexcept : impl(std::exchange(other.impl, nullptr)) {}

    /// As the move constructor. The document that this writer had is left as by the destructor.
    XmlWriter& operator=(XmlWriter&& other) noexcept
    {
        XmlWriter taken(std::move(other));
        std::swap(impl, taken.impl);
        return *this;
    }

    /// Writes the XML declaration, with `encoding="UTF-8"` on the two UTF-8 targets and without an
    /// encoding on a UTF-16 string.
    ///
    /// Meant to be the first call, but written in any state. The last call decides how `writeValue`
    /// treats control characters.
    ///
    /// @param version the version, written verbatim. Exactly "1.0" selects the rules of XML 1.0.
    /// @see @ref control-characters-and-versions
    void writeStartDocument(const std::u16string& version = DEFAULT_VERSION);

    /// Ends an open attribute value and every open element, then pushes all text to the target and
    /// flushes a target stream. The writer can be used on; a later call pushes again.
    /// @see @ref targets-and-when-text-reaches-them
    void writeEndDocument();

    /// Writes @p xml without any change, at the current place and in any state.
    ///
    /// Nothing is closed first: while a start tag is open the text lands inside it, and while an
    /// attribute value is open, inside that. Call `writeStartElementClose` first to write raw
    /// content.
    /// @see @ref raw-text
    void writeRawXml(const std::u16string& xml);

    /// Writes @p value as character data: into the attribute value that is open, or else as
    /// content, closing an open start tag. Consecutive calls continue the same text.
    ///
    /// `<`, `>`, `&`, `"` and `'` are written as entity references. U+0001 to U+0008, U+000B,
    /// U+000C and U+000E to U+001F are written as decimal character references; but if version 1.0
    /// has been declared, U+000B becomes a space and the others are left out. Every other code unit
    /// is written as it is, U+0000, tab, line feed and carriage return included.
    ///
    /// An empty @p value writes nothing but still closes an open start tag.
    /// @see @ref elements-and-text, @ref control-characters-and-versions
    void writeValue(const std::u16string& value);

    /// Opens an element, first closing an open attribute value and start tag.
    ///
    /// Declarations that are due, for this name or registered earlier, follow the name.
    ///
    /// @param localName the local name.
    /// @param namespaceUri the namespace name; empty for none.
    /// @param prefix the preferred prefix; empty for no preference.
    /// @see @ref elements-and-text, @ref namespaces
    void writeStartElement(const std::u16string& localName, const std::u16string& namespaceUri,
                           const std::u16string& prefix);

    /// Closes an open start tag with `>`, after ending an open attribute value. Ignored if no start
    /// tag is open.
    /// @see @ref raw-text
    void writeStartElementClose();

    /// Ends the innermost open element: with `/>` if its start tag is still open, with an end tag
    /// otherwise. The bindings that were declared on it go out of scope. Ignored if no element is
    /// open.
    /// @see @ref elements-and-text
    void writeEndElement();

    /// Writes a whole element: start tag, @p value as by `writeValue`, end tag, on one line. An
    /// empty @p value gives `<a></a>`.
    /// @see @ref elements-and-text
    void writeElement(const std::u16string& localName, const std::u16string& namespaceUri,
                      const std::u16string& prefix, const std::u16string& value);

    /// As above, without a preferred prefix.
    /// @see @ref elements-and-text
    void writeElement(const std::u16string& localName, const std::u16string& namespaceUri,
                      const std::u16string& value);

    /// As above, without a namespace.
    /// @see @ref elements-and-text
    void writeElement(const std::u16string& localName, const std::u16string& value);

    /// Writes a whole element without content, as an empty-element tag.
    /// @see @ref elements-and-text
    void writeEmptyElement(const std::u16string& localName, const std::u16string& namespaceUri,
                           const std::u16string& prefix);

    /// Begins an attribute on the open start tag, ending the attribute value that is open. Ignored
    /// if no start tag is open. Calls of `writeValue` and then `writeEndAttribute` are to follow.
    ///
    /// A namespace bound as the default gives an unprefixed attribute name.
    /// @see @ref attributes
    void writeStartAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                             const std::u16string& prefix);

    /// Ends the open attribute value; declarations that are due follow. Ignored if none is open.
    /// @see @ref attributes
    void writeEndAttribute();

    /// Writes a whole attribute on the open start tag; declarations that are due follow.
    ///
    /// If no start tag is open, @p value is written as character data, as by `writeValue`.
    /// @see @ref attributes
    void writeAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                        const std::u16string& prefix, const std::u16string& value);

    /// As above, without a preferred prefix.
    /// @see @ref attributes
    void writeAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                        const std::u16string& value);

    /// As above, without a namespace.
    /// @see @ref attributes
    void writeAttribute(const std::u16string& localName, const std::u16string& value);

    /// Binds @p namespaceUri on the open start tag and declares it there at once, ending an open
    /// attribute value first. Ignored if no start tag is open or the namespace name is bound
    /// already.
    ///
    /// @param namespaceUri the namespace name.
    /// @param prefix the preferred prefix; empty for a generated one, never for the default
    /// namespace.
    /// @see @ref where-declarations-land
    void writeNamespace(const std::u16string& namespaceUri, const std::u16string& prefix);

    /// Writes the attribute `xmlns="namespaceUri"`, as by `writeAttribute`, and binds nothing:
    /// names in that namespace still receive a prefix of their own. For names without a prefix, use
    /// `registerDefaultNamespace`.
    /// @see @ref the-default-namespace
    void writeDefaultNamespace(const std::u16string& namespaceUri);

    /// Binds @p namespaceUri to the empty prefix, so that names in it are written without a prefix.
    ///
    /// Writes nothing now. The declaration follows on the next start tag, or on the one that is
    /// open after its next attribute or `writeNamespace`. A namespace name that is bound already
    /// keeps its prefix and is declared once more.
    /// @see @ref the-default-namespace
    void registerDefaultNamespace(const std::u16string& namespaceUri);

private:
    /// Owned. A plain pointer, because moving a smart one would need the definition of Impl here.
    Impl* impl;
};

} // namespace tarn::utils
