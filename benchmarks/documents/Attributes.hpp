// Empty elements with many attributes.
#pragma once

#include "benchmarks/documents/TextSource.hpp"
#include "benchmarks/text_forms.hpp"

#include <vector>

namespace benchmarks {

template <class String>
class Attributes
{
public:
    static constexpr const char* NAME = "attributes";
    static constexpr int COPIES = 1;

    Attributes()
    {
        TextSource source(ENGLISH);
        for (std::size_t column = 1; column <= 30; ++column) {
            columns.emplace_back(numbered(u"column", column));
        }
        for (std::size_t row = 0; row < 500; ++row) {
            std::vector<String>& values = rows.emplace_back();
            for (std::size_t column = 0; column < columns.size(); ++column) {
                values.push_back(convert<String>(source.words(source.number(1, 3))));
            }
        }
    }

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(root);
        for (const std::vector<String>& values : rows) {
            writer.startElement(row);
            for (std::size_t column = 0; column < columns.size(); ++column) {
                writer.attribute(columns[column], values[column]);
            }
            writer.endElement();
        }
        writer.endElement();
    }

private:
    Name<String> root{u"table"};
    Name<String> row{u"row"};
    std::vector<Name<String>> columns;
    std::vector<std::vector<String>> rows;
};

} // namespace benchmarks
