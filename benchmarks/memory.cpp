// Usage: benchmark-memory [BYTES]
// Writes a document of about BYTES bytes, 1 GB without an argument, to a stream that discards it,
// with the writer and with the checked layer, and prints how much heap memory each held at most.
// Fails if that is more than it may hold.
#include "tarn/document/Document.hpp"
#include "tarn/xml/XmlWriter.hpp"

#include <malloc.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <ostream>
#include <streambuf>

namespace {

std::size_t heapBytes = 0;
std::size_t mostHeapBytes = 0;

/// Counts the bytes that are written and discards them.
class DiscardingBuffer : public std::streambuf
{
public:
    std::uint64_t bytes = 0;

protected:
    int_type overflow(int_type character) override
    {
        ++bytes;
        return traits_type::not_eof(character);
    }

    std::streamsize xsputn(const char*, std::streamsize count) override
    {
        bytes += static_cast<std::uint64_t>(count);
        return count;
    }
};

} // namespace

void* operator new(std::size_t size)
{
    void* const block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    heapBytes += malloc_usable_size(block);
    mostHeapBytes = std::max(mostHeapBytes, heapBytes);
    return block;
}

void operator delete(void* block) noexcept
{
    heapBytes -= malloc_usable_size(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}

namespace {

// Both documents have elements in two namespaces, one of them declared again for each record, at a
// constant depth, and end when @p bytes have arrived in @p target.
constexpr int DEPTH = 20;

void writeRecords(tarn::utils::XmlWriter& writer, const DiscardingBuffer& target,
                  std::uint64_t bytes)
{
    const std::u16string none;
    const std::u16string records = u"http://schemas.example.org/2024/records";
    const std::u16string notes = u"http://schemas.example.org/2024/notes";
    const std::u16string section = u"section";
    const std::u16string record = u"record";
    const std::u16string id = u"id";
    const std::u16string identifier = u"4711";
    const std::u16string note = u"note";
    const std::u16string text = u"a < b, and words: слова, 言葉 \"quoted\"; once more: слова, 言葉";

    writer.writeStartDocument();
    for (int level = 0; level < DEPTH; ++level) {
        writer.writeStartElement(section, records, none);
    }
    while (target.bytes < bytes) {
        writer.writeStartElement(record, records, none);
        writer.writeAttribute(id, identifier);
        writer.writeElement(note, notes, none, text);
        writer.writeEndElement();
    }
    writer.writeEndDocument();
}

void writeRecords(tarn::document::Document& document, const DiscardingBuffer& target,
                  std::uint64_t bytes)
{
    using namespace tarn::document;
    constexpr Namespace RECORDS{"http://schemas.example.org/2024/records"};
    constexpr Namespace NOTES{"http://schemas.example.org/2024/notes", "n"};
    constexpr Name SECTION{RECORDS, "section"};
    constexpr Name RECORD{RECORDS, "record"};
    constexpr Name ID{"id"};
    constexpr Name NOTE{NOTES, "note"};

    Element section = document.root(SECTION);
    for (int level = 1; level < DEPTH; ++level) {
        section = section.child(SECTION);
    }
    while (target.bytes < bytes) {
        section.child(RECORD).attribute(ID, 4711).add(
            NOTE, "a < b, and words: слова, 言葉 \"quoted\"; once more: слова, 言葉");
    }
    document.finish();
}

/// Makes a writer over a stream and lets it write; prints how much memory it holds.
/// @return whether that is at most @p allowed bytes.
template <class Writer>
bool measure(const char* name, std::uint64_t documentBytes, std::size_t allowed)
{
    DiscardingBuffer target;
    std::ostream stream(&target);
    const std::size_t before = heapBytes;
    Writer writer(stream);
    const std::size_t atFirst = heapBytes - before;
    mostHeapBytes = heapBytes;
    writeRecords(writer, target, documentBytes);
    const std::size_t most = mostHeapBytes - before;
    std::cout << "Heap memory of " << name << " that wrote " << target.bytes
              << " bytes to a stream: " << most << " bytes at most, " << atFirst << " when new; "
              << allowed << " are allowed\n";
    if (atFirst == 0) {
        std::cerr << "benchmark-memory: the allocations of " << name << " were not counted\n";
        return false;
    }
    return most <= allowed;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::uint64_t documentBytes = 1'000'000'000;
    if (argumentCount > 1) {
        const char* const end = arguments[1] + std::strlen(arguments[1]);
        const auto [parsed, error] = std::from_chars(arguments[1], end, documentBytes);
        if (argumentCount > 2 || error != std::errc() || parsed != end) {
            std::cerr << "Usage: benchmark-memory [BYTES]\n";
            return 2;
        }
    }
    constexpr std::size_t KIB = 1024;
    const bool writerIsSmall =
        measure<tarn::utils::XmlWriter>("an XmlWriter", documentBytes, 64 * KIB);
    const bool documentIsSmall =
        measure<tarn::document::Document>("a Document", documentBytes, 192 * KIB);
    return writerIsSmall && documentIsSmall ? 0 : 1;
}
