// Many small elements with two attributes each and short text.
#pragma once

#include "benchmarks/documents/TextSource.hpp"
#include "benchmarks/text_forms.hpp"

#include <vector>

namespace benchmarks {

template <class String>
class Records
{
public:
    static constexpr const char* NAME = "records";
    static constexpr int COPIES = 1;

    Records()
    {
        TextSource source(ENGLISH);
        for (std::size_t number = 1; number <= 5000; ++number) {
            records.push_back({convert<String>(numbered(u"1", number)),
                               convert<String>(source.words(1)),
                               convert<String>(source.words(source.number(1, 4)))});
        }
    }

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(root);
        for (const Record& record : records) {
            writer.startElement(element);
            writer.attribute(id, record.id);
            writer.attribute(kind, record.kind);
            writer.text(record.title);
            writer.endElement();
        }
        writer.endElement();
    }

private:
    struct Record
    {
        String id;
        String kind;
        String title;
    };

    Name<String> root{u"records"};
    Name<String> element{u"record"};
    Name<String> id{u"id"};
    Name<String> kind{u"kind"};
    std::vector<Record> records;
};

} // namespace benchmarks
