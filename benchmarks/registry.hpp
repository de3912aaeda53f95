// Every document with every writer. The source file of a writer registers it for all documents. A
// writer whose library is not installed is not compiled, and is therefore not registered.
#pragma once

#include "benchmarks/documents/Attributes.hpp"
#include "benchmarks/documents/Deep.hpp"
#include "benchmarks/documents/Feed.hpp"
#include "benchmarks/documents/Namespaces.hpp"
#include "benchmarks/documents/Office.hpp"
#include "benchmarks/documents/Paragraphs.hpp"
#include "benchmarks/documents/Records.hpp"
#include "benchmarks/documents/Tiny.hpp"
#include "benchmarks/Outline.hpp"

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace benchmarks {

/// One document with one writer.
struct Case
{
    std::string document;
    std::string writer;
    /// Writes the document again and again.
    void (*time)(benchmark::State&);
    /// Writes the document once and returns it as UTF-8.
    std::string (*write)();
    /// The outline that the document should have.
    std::string (*outline)();
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
    return std::string(toUtf8(writer.finish()));
}

/// Makes a writer ready for the next document.
template <class Writer>
void beginAgain(std::optional<Writer>& writer)
{
    if constexpr (requires { writer->reset(); }) {
        writer->reset();
    } else {
        writer.emplace();
    }
}

/// Each time, a new writer writes to a new target, unless the document is one for writers that are
/// used again.
template <class Writer, class Document>
void time(benchmark::State& state)
{
    const auto& timed = document<Document>();
    std::size_t bytes = 0;
    std::optional<Writer> writer(std::in_place);
    for ([[maybe_unused]] auto iteration : state) {
        for (int copy = 0; copy < Document::COPIES; ++copy) {
            if constexpr (requires { Document::USES_WRITER_AGAIN; }) {
                beginAgain(writer);
            } else {
                writer.emplace();
            }
            timed.write(*writer);
            const auto output = writer->finish();
            benchmark::DoNotOptimize(output.data());
            bytes += output.size() * sizeof(output.front());
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

/// Registers a writer for all documents, under a name and the version of its library. A writer is a
/// class
/// @code
///     class Writer
///     {
///     public:
///         using String = ...; // the type of text that it takes
///         Writer();           // makes the target and begins the document
///         void startElement(const Name<String>&);
///         void startElement(const Name<String>&, const std::vector<Namespace<String>>& declared);
///         void attribute(const Name<String>&, const String& value);
///         void text(const String&);
///         void endElement();
///         void textElement(const Name<String>&, const String& text);
///         std::string_view finish(); // ends the document and returns the content of the target
///         void reset();              // optional: its own way to begin another document
///         // Optional: it refuses text that XML cannot hold.
///         static constexpr bool REFUSES_CONTROLS = true;
///     };
/// @endcode
template <class Writer>
class Registration
{
public:
    Registration(const std::string& writer, const std::string& version)
    {
        benchmark::AddCustomContext(writer, version);
        add<Records>(writer);
        add<Feed>(writer);
        add<Prose>(writer);
        add<Multilingual>(writer);
        add<Markup>(writer);
        add<Deep>(writer);
        add<Attributes>(writer);
        add<Namespaces>(writer);
        add<Scopes>(writer);
        add<Office>(writer);
        add<OneNamespace>(writer);
        if constexpr (!requires { Writer::REFUSES_CONTROLS; }) {
            add<Controls>(writer);
        }
        add<Huge>(writer);
        add<Tiny>(writer);
        add<TinyAgain>(writer);
    }

private:
    template <template <class> class Document>
    static void add(const std::string& writer)
    {
        using Timed = Document<typename Writer::String>;
        cases().push_back({Timed::NAME, writer, time<Writer, Timed>, write<Writer, Timed>,
                           write<Outline, Document<std::string>>});
    }
};

} // namespace benchmarks
