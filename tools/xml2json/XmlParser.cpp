#include "tools/xml2json/XmlParser.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <libxml/parser.h>
#include <new>
#include <optional>
#include <vector>

namespace xml2json {

using tarn::tools::advance;
using tarn::tools::Position;

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;

/// libxml2 takes the size of a block as an int.
constexpr std::size_t MOST_AT_ONCE = std::size_t{1} << 30;

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

void watchAllocations()
{
    xmlMemSetup(
        std::free, [](std::size_t size) { return noteLack(std::malloc(size)); },
        [](void* block, std::size_t size) { return noteLack(std::realloc(block, size)); },
        [](const char* text) { return static_cast<char*>(noteLack(::strdup(text))); });
}

/// On one line, without the line feed at the end. libxml2 has one message for text after the
/// document and for a document that is cut off.
///
/// @param depth how many elements are open, if the document has had any.
std::string messageOf(const xmlError& error, std::optional<std::size_t> depth)
{
    if (error.code == XML_ERR_DOCUMENT_EMPTY || (error.code == XML_ERR_DOCUMENT_END && !depth)) {
        return "expected an element";
    }
    if (error.code == XML_ERR_DOCUMENT_END && depth > 0) {
        return "the input ends inside an element";
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
    explicit Context(const XmlParser& owner) : owner(owner)
    {
        static const bool isWatching = (watchAllocations(), true);
        static_cast<void>(isWatching);
        hasLackedMemory = false;
        xmlSAXHandler handler{};
        handler.initialized = XML_SAX2_MAGIC;
        handler.startDocument = [](void* self) { static_cast<Context*>(self)->endEvent(); };
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
        handler.serror = reportError;
        const ErrorReports reports(this);
        parser = xmlCreatePushParserCtxt(&handler, this, nullptr, 0, nullptr);
        if (parser == nullptr || hasLackedMemory) {
            xmlFreeParserCtxt(parser);
            throw std::bad_alloc();
        }
        // The limits of libxml2 on depth and sizes are replaced by those of this program. The five
        // predefined entities are replaced, in attribute values too; there are no others.
        xmlCtxtUseOptions(parser, XML_PARSE_HUGE | XML_PARSE_NOENT | XML_PARSE_NONET);
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context()
    {
        xmlFreeDoc(parser->myDoc); // libxml2 keeps declarations there
        xmlFreeParserCtxt(parser);
    }

    /// Parses @p block, which is empty at the end of the document.
    void parse(std::string_view block, XmlEvents& receiver)
    {
        events = &receiver;
        const ErrorReports reports(this);
        xmlParseChunk(parser, block.data(), static_cast<int>(block.size()), block.empty() ? 1 : 0);
        if (hasLackedMemory) {
            throw std::bad_alloc();
        }
        if (failure) {
            std::rethrow_exception(failure);
        }
    }

    /// How many bytes libxml2 has kept because a start tag or comment is not complete.
    std::size_t unparsedSize() const
    {
        return static_cast<std::size_t>(parser->input->end - parser->input->cur);
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

    static void startElement(void* self, const xmlChar* localName, const xmlChar*,
                             const xmlChar* space, int, const xmlChar**, int attributeCount, int,
                             const xmlChar** attributes)
    {
        guard(self, [&](Context& context) {
            context.eventStart = context.startOfTag();
            if (xmlDictGetUsage(context.parser->dict) > MOST_FOR_NAMES) {
                context.owner.fail(context.eventStart,
                                   "more than a million bytes of different names");
            }
            context.depth = context.depth.value_or(0) + 1;
            context.attributes.clear();
            for (int i = 0; i < attributeCount; ++i) {
                constexpr int FIELDS = 5; // local name, prefix, namespace name, value, its end
                const xmlChar** const fields = attributes + static_cast<std::ptrdiff_t>(i) * FIELDS;
                context.attributes.push_back(
                    {{view(fields[2]), view(fields[0])}, view(fields[3], fields[4])});
            }
            context.events->startElement({view(space), view(localName)}, context.attributes);
            context.eventStart = context.here();
            ++context.eventStart.column; // the `>`, which has not been read
        });
    }

    static void endElement(void* self, const xmlChar*, const xmlChar*, const xmlChar*)
    {
        guard(self, [](Context& context) {
            context.events->endElement();
            --*context.depth;
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
            context.owner.fail(start, "a document type declaration is not allowed");
        });
    }

    static void reportError(void* self, xmlErrorPtr error)
    {
        guard(self, [&](Context& context) {
            if (error->level >= XML_ERR_ERROR) {
                context.owner.fail({static_cast<unsigned>(error->line),
                                    static_cast<unsigned>(std::max(error->int2, 1))},
                                   messageOf(*error, context.depth));
            }
        });
    }

    /// How far libxml2 has read.
    Position here() const
    {
        return {static_cast<unsigned>(parser->input->line),
                static_cast<unsigned>(parser->input->col)};
    }

    /// The next event begins here.
    void endEvent() { eventStart = here(); }

    /// The position of the start tag, or declaration, that libxml2 has read. It counts back from
    /// there, because libxml2 does not report the white space before the outermost element.
    Position startOfTag() const
    {
        const std::string_view before = view(parser->input->base, parser->input->cur);
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
        const std::size_t lineFeed = before.substr(0, start).rfind('\n');
        const std::uint64_t line = end.line - (size.line - 1);
        return lineFeed == std::string_view::npos
                   ? Position{line, eventStart.column}
                   : advance({line, 1}, before.substr(lineFeed + 1, start - lineFeed - 1));
    }

    const XmlParser& owner;
    xmlParserCtxtPtr parser = nullptr;
    XmlEvents* events = nullptr;
    std::exception_ptr failure;
    /// How many elements are open. Not set before the first one.
    std::optional<std::size_t> depth;

    /// Kept to use its memory again.
    std::vector<Attribute> attributes;
};

XmlParser::XmlParser(tarn::tools::InputFile file)
    : context(std::make_unique<Context>(*this)), file(std::move(file))
{
}

XmlParser::~XmlParser() = default;

void XmlParser::parse(XmlEvents& events)
{
    std::vector<char> buffer(BLOCK_SIZE);
    std::uint64_t bytesRead = 0;
    std::size_t size;
    do {
        // libxml2 looks at all of an incomplete tag again with each block. So the blocks grow with
        // it, else the time would grow with the square of its size.
        const std::size_t unparsed = std::min(context->unparsedSize(), MOST_AT_ONCE);
        buffer.resize(std::max(BLOCK_SIZE, unparsed));
        size = 0;
        std::size_t count;
        do {
            count = file.descriptor.read(buffer.data() + size, buffer.size() - size, file.name);
            size += count;
            bytesRead += count;
            file.onBlock(bytesRead);
        } while (count > 0 && size < unparsed);
        context->parse({buffer.data(), size}, events);
    } while (size > 0);
}

Position XmlParser::position() const
{
    return context->eventStart;
}

void XmlParser::fail(Position position, const std::string& problem) const
{
    failAt(file.name, position, problem);
}

} // namespace xml2json
