#include "tools/xml2json/XmlParser.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <new>
#include <utility>
#include <vector>

namespace xml2json {

using tarn::tools::advance;
using tarn::tools::Position;

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;

/// libxml2 keeps every name and namespace name that it has met, and gets slow if there are many.
/// This is how much memory it may take for them, in bytes; it takes it in steps, so it has room for
/// a million bytes.
constexpr std::size_t MOST_FOR_NAMES = 2'000'000;

std::string_view view(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : std::string_view();
}

std::string_view view(const xmlChar* first, const xmlChar* last)
{
    return {reinterpret_cast<const char*>(first), reinterpret_cast<const char*>(last)};
}

/// Whether an allocation has failed. libxml2 does not always report that: it can go on with less
/// text than the document has.
thread_local bool hasLackedMemory = false;

void* noteLack(void* block)
{
    hasLackedMemory = hasLackedMemory || block == nullptr;
    return block;
}

/// To be called once, before all else: of threads that make their first parsers at the same time,
/// each would prepare libxml2, with memory of its own.
void prepareLibrary()
{
    xmlMemSetup(
        std::free, [](std::size_t size) { return noteLack(std::malloc(size)); },
        [](void* block, std::size_t size) { return noteLack(std::realloc(block, size)); },
        [](const char* text) { return static_cast<char*>(noteLack(::strdup(text))); });
    xmlInitParser();
}

/// The number of blanks at the end of the last line of @p text.
std::size_t blanksAtEnd(std::string_view text)
{
    return text.size() - (text.find_last_not_of(" \t\r") + 1);
}

/// On one line, without the line feed at the end.
std::string messageOf(const xmlError& error)
{
    if (error.code == XML_ERR_DOCUMENT_EMPTY) {
        return "expected an element";
    }
    if (error.code == XML_ERR_TAG_NOT_FINISHED) {
        return "the input ends inside an element";
    }
    if (error.code == XML_ERR_CDATA_NOT_FINISHED) {
        return "the input ends inside a CDATA section";
    }
    std::string message = error.message != nullptr ? error.message : "not well-formed";
    while (message.ends_with('\n') || message.ends_with(' ')) {
        message.pop_back();
    }
    std::ranges::replace(message, '\n', ' ');
    return message;
}

} // namespace

/// libxml2's parser, and how it calls back. No exception may pass through libxml2, so the first one
/// is kept until libxml2 returns; what it reports after that is ignored.
class XmlParser::Context
{
public:
    explicit Context(tarn::tools::InputFile file) : file(std::move(file))
    {
        hasLackedMemory = false;
        [[maybe_unused]] static const bool isPrepared = (prepareLibrary(), true);
        xmlSAXHandler handler{};
        handler.initialized = XML_SAX2_MAGIC;
        handler.startDocument = startDocument;
        handler.internalSubset = refuseDocumentType;
        handler.startElementNs = startElement;
        handler.endElementNs = endElement;
        handler.characters = text;
        handler.ignorableWhitespace = text;
        handler.cdataBlock = text;
        handler.comment = [](void* self, const xmlChar*) {
            static_cast<Context*>(self)->endEvent();
        };
        handler.processingInstruction = [](void* self, const xmlChar*, const xmlChar*) {
            static_cast<Context*>(self)->endEvent();
        };
        const ErrorReports reports(this);
        // xmlCreateIOParserCtxt() would leak when memory runs out.
        parser = xmlNewParserCtxt();
        if (parser == nullptr || !setInput() || hasLackedMemory) {
            xmlFreeParserCtxt(parser);
            throw std::bad_alloc();
        }
        *parser->sax = handler;
        parser->userData = this;
        // The limits of libxml2 on depth and sizes are replaced by those of this program. The five
        // predefined entities are replaced, in attribute values too; there are no others.
        xmlCtxtUseOptions(parser, XML_PARSE_HUGE | XML_PARSE_NOENT | XML_PARSE_NONET);
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context() { xmlFreeParserCtxt(parser); }

    void parse(XmlEvents& receiver)
    {
        events = &receiver;
        const ErrorReports reports(this);
        xmlParseDocument(parser);
        if (hasLackedMemory) {
            throw std::bad_alloc();
        }
        if (failure) {
            std::rethrow_exception(failure);
        }
    }

    /// Throws an error whose text is `NAME:LINE:COLUMN: problem`.
    [[noreturn]] void fail(Position position, const std::string& problem) const
    {
        failAt(file.name, position, problem);
    }

    Position eventStart;

private:
    /// While it exists, also what libxml2 reports without a parser is reported; it would be printed
    /// otherwise.
    class ErrorReports
    {
    public:
        explicit ErrorReports(Context* context) { xmlSetStructuredErrorFunc(context, reportError); }
        ErrorReports(const ErrorReports&) = delete;
        ErrorReports& operator=(const ErrorReports&) = delete;
        ~ErrorReports()
        {
            xmlSetStructuredErrorFunc(nullptr, nullptr);
            xmlResetLastError(); // it is not needed, and takes memory
        }
    };

    /// Calls @p report unless something has failed before.
    static void guard(void* self, const auto& report)
    {
        auto& context = *static_cast<Context*>(self);
        if (context.failure) {
            return;
        }
        try {
            report(context);
        } catch (...) {
            context.failure = std::current_exception();
        }
    }

    /// Makes libxml2 call read(). Returns false if memory runs out.
    bool setInput()
    {
        xmlParserInputBufferPtr buffer =
            xmlParserInputBufferCreateIO(read, nullptr, this, XML_CHAR_ENCODING_NONE);
        if (buffer == nullptr) {
            return false;
        }
        xmlParserInputPtr input = xmlNewIOInputStream(parser, buffer, XML_CHAR_ENCODING_NONE);
        if (input == nullptr) {
            xmlFreeParserInputBuffer(buffer);
            return false;
        }
        return inputPush(parser, input) >= 0;
    }

    /// Copies the next @p size bytes of the file, or what is left of it, and returns how many. It
    /// never stops before that: libxml2 would take what follows for the end, even inside a
    /// delimiter.
    static int read(void* self, char* bytes, int size)
    {
        std::size_t count = 0;
        guard(self, [&](Context& context) {
            const auto wanted = static_cast<std::size_t>(size);
            while (count < wanted && context.hasUnread()) {
                const std::size_t copied = context.unread.copy(bytes + count, wanted - count);
                context.unread.remove_prefix(copied);
                count += copied;
            }
        });
        return static_cast<int>(count);
    }

    /// libxml2 calls this behind the XML declaration, if there is one, and the white space after
    /// it.
    static void startDocument(void* self)
    {
        auto& context = *static_cast<Context*>(self);
        context.endEvent();
        context.eventStart.column -= blanksAtEnd(context.textBefore());
    }

    static void startElement(void* self, const xmlChar* localName, const xmlChar*,
                             const xmlChar* space, int, const xmlChar**, int attributeCount, int,
                             const xmlChar** attributes)
    {
        guard(self, [&](Context& context) {
            if (!context.hasElement) {
                context.eventStart = context.startOfTag();
                context.hasElement = true;
            }
            context.attributes.clear();
            for (int i = 0; i < attributeCount; ++i) {
                constexpr int FIELDS = 5; // local name, prefix, namespace name, value, its end
                const xmlChar** const fields = attributes + static_cast<std::ptrdiff_t>(i) * FIELDS;
                context.attributes.push_back(
                    {{view(fields[2]), view(fields[0])}, view(fields[3], fields[4])});
            }
            context.events->startElement({view(space), view(localName)}, context.attributes);
            context.endEvent();
            ++context.eventStart.column; // the `>`, which has not been read
        });
    }

    static void endElement(void* self, const xmlChar*, const xmlChar*, const xmlChar*)
    {
        guard(self, [](Context& context) {
            context.events->endElement();
            context.endEvent();
        });
    }

    static void text(void* self, const xmlChar* characters, int length)
    {
        guard(self, [&](Context& context) {
            context.events->text(view(characters, characters + length));
            context.endEvent();
        });
    }

    static void refuseDocumentType(void* self, const xmlChar*, const xmlChar*, const xmlChar*)
    {
        guard(self, [](Context& context) {
            const Position start = context.startOfTag();
            xmlStopParser(context.parser); // so that it does not even look at the declarations
            context.fail(start, "a document type declaration is not allowed");
        });
    }

    static void reportError(void* self, xmlErrorPtr error)
    {
        guard(self, [&](Context& context) {
            if (error->level >= XML_ERR_ERROR) {
                // The place of a fault in the encoding is not known.
                const Position place =
                    error->line > 0 ? Position{static_cast<unsigned>(error->line),
                                               static_cast<unsigned>(std::max(error->int2, 1))}
                                    : context.eventStart;
                context.fail(place, messageOf(*error));
            }
        });
    }

    /// Reads a block if all of the last one has been used. Returns false at the end of the file,
    /// behind which a terminal or a pipe could have more.
    bool hasUnread()
    {
        if (unread.empty() && !ended) {
            checkNames();
            const std::size_t size = file.descriptor.read(block.data(), block.size(), file.name);
            bytesRead += size;
            file.onBlock(bytesRead);
            unread = {block.data(), size};
            ended = size == 0;
        }
        return !unread.empty();
    }

    void checkNames() const
    {
        if (xmlDictGetUsage(parser->dict) > MOST_FOR_NAMES) {
            fail(eventStart, "more than a million bytes of different names");
        }
    }

    /// How far libxml2 has read.
    Position here() const
    {
        return {static_cast<unsigned>(parser->input->line),
                static_cast<unsigned>(parser->input->col)};
    }

    /// The end of what libxml2 has read.
    std::string_view textBefore() const { return view(parser->input->base, parser->input->cur); }

    /// The next event begins here.
    void endEvent() { eventStart = here(); }

    /// The position of the outermost start tag, or the declaration, that libxml2 has read. It
    /// counts back from there, because libxml2 does not report the white space before it.
    Position startOfTag() const
    {
        const std::string_view before = textBefore();
        const std::size_t start = before.rfind('<');
        if (start == std::string_view::npos) {
            return eventStart;
        }
        const std::string_view tag = before.substr(start);
        const Position size = advance({}, tag);
        const Position end = here();
        if (size.line == 1) {
            return {end.line, end.column - (size.column - 1)};
        }
        const std::string_view prolog = before.substr(0, start);
        const std::size_t lineFeed = prolog.rfind('\n');
        const std::uint64_t line = end.line - (size.line - 1);
        return lineFeed == std::string_view::npos
                   ? Position{line, eventStart.column + blanksAtEnd(prolog)}
                   : advance({line, 1}, prolog.substr(lineFeed + 1));
    }

    tarn::tools::InputFile file;
    xmlParserCtxtPtr parser = nullptr;
    XmlEvents* events = nullptr;
    std::exception_ptr failure;
    bool hasElement = false;

    /// What has been read from the file last, and how much of it libxml2 has not had.
    std::vector<char> block = std::vector<char>(BLOCK_SIZE);
    std::string_view unread;
    std::uint64_t bytesRead = 0;
    bool ended = false;

    /// Kept to use its memory again.
    std::vector<Attribute> attributes;
};

XmlParser::XmlParser(tarn::tools::InputFile file)
    : context(std::make_unique<Context>(std::move(file)))
{
}

XmlParser::~XmlParser() = default;

void XmlParser::parse(XmlEvents& events)
{
    context->parse(events);
}

Position XmlParser::position() const
{
    return context->eventStart;
}

void XmlParser::fail(Position position, const std::string& problem) const
{
    context->fail(position, problem);
}

} // namespace xml2json
