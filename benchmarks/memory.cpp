// Usage: benchmark-memory [BYTES]
// Writes a document of about BYTES bytes, 1 GB without an argument, to a stream that discards it,
// and prints how much heap memory the writer held at most. Fails if that is more than a writer may
// hold.
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

/// Writes elements in two namespaces, one of them declared again for each record, at a constant
/// depth, until @p bytes have arrived in @p target.
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
    constexpr int DEPTH = 20;

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
    constexpr std::size_t MOST_ALLOWED = 64 * 1024;
    DiscardingBuffer target;
    std::ostream stream(&target);

    const std::size_t before = heapBytes;
    tarn::utils::XmlWriter writer(stream);
    const std::size_t atFirst = heapBytes - before;
    mostHeapBytes = heapBytes;
    writeRecords(writer, target, documentBytes);
    const std::size_t most = mostHeapBytes - before;

    std::cout << "Heap memory of a writer that wrote " << target.bytes
              << " bytes to a stream: " << most << " bytes at most, " << atFirst << " when new; "
              << MOST_ALLOWED << " are allowed\n";
    if (atFirst == 0) {
        std::cerr << "benchmark-memory: the writer's allocations were not counted\n";
        return 1;
    }
    return most <= MOST_ALLOWED ? 0 : 1;
}
