// Usage: benchmark-xml-baseline INPUT
// Reads the XML file INPUT with libxml2 alone: its parser calls functions that do nothing. No
// program that reads XML with libxml2 can do less work.
#include <libxml/parser.h>

#include <cstdio>
#include <iostream>
#include <memory>

namespace {

/// As large as the blocks of xml2json.
constexpr std::size_t BUFFER_SIZE = std::size_t{64} * 1024;

xmlSAXHandler handlerWithoutEffect()
{
    xmlSAXHandler handler{};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*, int,
                                const xmlChar**, int, int, const xmlChar**) {};
    handler.endElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*) {};
    handler.characters = [](void*, const xmlChar*, int) {};
    handler.ignorableWhitespace = handler.characters;
    handler.cdataBlock = handler.characters;
    handler.comment = [](void*, const xmlChar*) {};
    handler.processingInstruction = [](void*, const xmlChar*, const xmlChar*) {};
    return handler;
}

int read(void* input, char* bytes, int size)
{
    return static_cast<int>(
        std::fread(bytes, 1, static_cast<std::size_t>(size), static_cast<std::FILE*>(input)));
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2) {
        std::cerr << "Usage: benchmark-xml-baseline INPUT\n";
        return 2;
    }
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> input(std::fopen(arguments[1], "rb"),
                                                                   std::fclose);
    if (input == nullptr) {
        std::perror("benchmark-xml-baseline");
        return 1;
    }
    std::setvbuf(input.get(), nullptr, _IOFBF, BUFFER_SIZE);
    xmlSAXHandler handler = handlerWithoutEffect();
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(
        xmlCreateIOParserCtxt(&handler, nullptr, read, nullptr, input.get(),
                              XML_CHAR_ENCODING_NONE),
        xmlFreeParserCtxt);
    if (parser == nullptr) {
        std::cerr << "benchmark-xml-baseline: no parser\n";
        return 1;
    }
    // The options of xml2json.
    xmlCtxtUseOptions(parser.get(), XML_PARSE_HUGE | XML_PARSE_NOENT | XML_PARSE_NONET);
    if (xmlParseDocument(parser.get()) != 0) {
        std::cerr << "benchmark-xml-baseline: " << arguments[1] << " is not well-formed\n";
        return 1;
    }
}
