// Every document with every writer. A writer's source file registers the writer for all documents;
// a writer whose library is not installed is not compiled and so not there.
#pragma once

#include "benchmarks/documents/Feed.hpp"
#include "benchmarks/documents/Paragraphs.hpp"
#include "benchmarks/documents/Records.hpp"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace benchmarks {

/// One document with one writer.
struct Case
{
    std::string document;
    std::string writer;
    /// Writes the document once and returns it as UTF-8.
    std::function<std::string()> write;
    std::function<void(benchmark::State&)> time;
};

/// The cases in the order of registration.
std::vector<Case>& cases();

/// The document, made at its first use.
template <class Document>
const Document& document()
{
    static const Document document;
    return document;
}

template <class Writer, class Document>
std::string write()
{
    Writer writer;
    document<Document>().write(writer);
    return std::string(writer.finish());
}

/// Writes the document again and again, each time with a new writer to a new target.
template <class Writer, class Document>
void time(benchmark::State& state)
{
    const Document& timed = document<Document>();
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto iteration : state) {
        for (int copy = 0; copy < Document::COPIES; ++copy) {
            Writer writer;
            timed.write(writer);
            const std::string_view output = writer.finish();
            benchmark::DoNotOptimize(output.data());
            bytes += output.size();
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

/// Registers a writer for all documents. A writer is a class
/// @code
///     class Writer
///     {
///     public:
///         using String = ...; // what it takes text in
///         Writer();           // makes the target, opens the document
///         void startElement(const Name<String>&);
///         void startElement(const Name<String>&, const std::vector<Namespace<String>>& declared);
///         void attribute(const Name<String>&, const String& value);
///         void text(const String&);
///         void endElement();
///         void textElement(const Name<String>&, const String& text);
///         std::string_view finish(); // ends the document; the target's bytes
///     };
/// @endcode
template <class Writer>
class Registration
{
public:
    explicit Registration(const std::string& writer)
    {
        using String = typename Writer::String;
        add<Records<String>>(writer);
        add<Feed<String>>(writer);
        add<Prose<String>>(writer);
        add<Multilingual<String>>(writer);
        add<Markup<String>>(writer);
        add<Huge<String>>(writer);
        add<Controls<String>>(writer);
    }

private:
    template <class Document>
    static void add(const std::string& writer)
    {
        cases().push_back(
            {Document::NAME, writer, write<Writer, Document>, time<Writer, Document>});
    }
};

} // namespace benchmarks
