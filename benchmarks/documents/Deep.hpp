// Elements deep inside elements.
#pragma once

#include "benchmarks/documents/TextSource.hpp"
#include "benchmarks/text_forms.hpp"

#include <vector>

namespace benchmarks {

template <class String>
class Deep
{
public:
    static constexpr const char* NAME = "deep";
    static constexpr int COPIES = 1;

    Deep()
    {
        TextSource source(ENGLISH);
        for (std::size_t chain = 0; chain < 50; ++chain) {
            leaves.push_back(convert<String>(source.words(5)));
        }
    }

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(root);
        for (const String& leaf : leaves) {
            for (int level = 0; level < DEPTH; ++level) {
                writer.startElement(section);
            }
            writer.text(leaf);
            for (int level = 0; level < DEPTH; ++level) {
                writer.endElement();
            }
        }
        writer.endElement();
    }

private:
    static constexpr int DEPTH = 100;

    Name<String> root{u"root"};
    Name<String> section{u"section"};
    std::vector<String> leaves;
};

} // namespace benchmarks
