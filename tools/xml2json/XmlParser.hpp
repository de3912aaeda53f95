// XmlParser: the elements and the text of an XML document, while it is read.
#pragma once

#include "tools/common/Position.hpp"
#include "tools/common/program.hpp"

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace xml2json {

/// An element or attribute: its namespace name, empty if it is in none, and its local name.
struct Name
{
    std::string_view space;
    std::string_view local;
};

struct Attribute
{
    Name name;
    std::string_view value;
};

/// Receives what a document holds. All texts are in UTF-8.
class XmlEvents
{
public:
    virtual void startElement(const Name& name, std::span<const Attribute> attributes) = 0;

    /// Receives a piece of text, in which every character is whole. Comments and processing
    /// instructions divide text, but are not reported.
    virtual void text(std::string_view piece) = 0;

    virtual void endElement() = 0;

protected:
    ~XmlEvents() = default;
};

/// Reads a file block by block and parses it with libxml2.
///
/// A document with a document type declaration is refused. So there are no entities but the five
/// that every document has, and nothing but the file is ever read.
///
/// Memory does not grow with the document, but with the longest start tag, comment, processing
/// instruction or CDATA section. Too many different names are refused, since libxml2 keeps them.
class XmlParser
{
public:
    explicit XmlParser(tarn::tools::InputFile file);
    ~XmlParser();

    /// Parses the whole document. Throws an error whose text is `NAME:LINE:COLUMN: problem` if it
    /// is not well-formed, with regard to namespaces too; and what @p events throws.
    void parse(XmlEvents& events);

    /// Where the event that is being reported begins.
    tarn::tools::Position position() const;

    /// Throws an error whose text is `NAME:LINE:COLUMN: problem`.
    [[noreturn]] void fail(tarn::tools::Position position, const std::string& problem) const;

private:
    class Context;
    std::unique_ptr<Context> context;
};

} // namespace xml2json
