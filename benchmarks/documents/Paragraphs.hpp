// Long paragraphs: plain ones, in many scripts, with many characters that have to be escaped.
#pragma once

#include "benchmarks/documents/TextSource.hpp"
#include "benchmarks/text_forms.hpp"

#include <vector>

namespace benchmarks {

template <class String>
class Paragraphs
{
public:
    static constexpr int COPIES = 1;

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(root);
        for (const String& text : paragraphs) {
            writer.textElement(paragraph, text);
        }
        writer.endElement();
    }

protected:
    Paragraphs() = default;

    /// Adds @p count paragraphs of about @p units UTF-16 code units.
    void add(const Vocabulary& vocabulary, std::size_t count, std::size_t units)
    {
        TextSource source(vocabulary);
        for (std::size_t number = 0; number < count; ++number) {
            paragraphs.push_back(
                convert<String>(source.paragraph(source.number(units / 2, units * 3 / 2))));
        }
    }

private:
    Name<String> root{u"text"};
    Name<String> paragraph{u"p"};
    std::vector<String> paragraphs;
};

template <class String>
struct Prose : Paragraphs<String>
{
    static constexpr const char* NAME = "prose";
    Prose() { this->add(ENGLISH, 500, 1000); }
};

template <class String>
struct Multilingual : Paragraphs<String>
{
    static constexpr const char* NAME = "multilingual";

    Multilingual()
    {
        for (const Vocabulary& script : SCRIPTS) {
            this->add(script, 60, 800);
        }
    }
};

template <class String>
struct Markup : Paragraphs<String>
{
    static constexpr const char* NAME = "markup";
    Markup() { this->add(SOURCE_TEXT, 500, 600); }
};

/// A single value longer than any buffer.
template <class String>
struct Huge : Paragraphs<String>
{
    static constexpr const char* NAME = "huge";
    Huge() { this->add(ENGLISH, 1, 2'000'000); }
};

template <class String>
struct Controls : Paragraphs<String>
{
    static constexpr const char* NAME = "controls";
    Controls() { this->add(CONTROLS, 500, 600); }
};

} // namespace benchmarks
