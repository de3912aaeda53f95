// Every element is in one of three namespaces, whose names are long and begin alike.
#pragma once

#include "benchmarks/documents/TextSource.hpp"
#include "benchmarks/text_forms.hpp"

#include <vector>

namespace benchmarks {

template <class String>
class Feed
{
public:
    static constexpr const char* NAME = "feed";
    static constexpr int COPIES = 1;

    Feed()
    {
        TextSource source(ENGLISH);
        for (std::size_t number = 1; number <= 1000; ++number) {
            const std::u16string address = numbered(u"https://www.example.org/2024/05/", number);
            const std::u16string time =
                numbered(u"2024-05-", source.number(10, 31)) + u"T18:30:02Z";
            entries.push_back({convert<String>(address), convert<String>(source.words(6)),
                               convert<String>(time), convert<String>(source.words(2)),
                               convert<String>(source.words(1)),
                               convert<String>(source.paragraph(80))});
        }
    }

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(feed, namespaces);
        for (const Entry& entry : entries) {
            writer.startElement(this->entry);
            writer.textElement(id, entry.address);
            writer.textElement(title, entry.title);
            writer.startElement(link);
            writer.attribute(reference, entry.address);
            writer.endElement();
            writer.textElement(updated, entry.time);
            writer.textElement(creator, entry.creator);
            writer.textElement(subject, entry.subject);
            writer.textElement(issued, entry.time);
            writer.textElement(summary, entry.summary);
            writer.endElement();
        }
        writer.endElement();
    }

private:
    struct Entry
    {
        String address;
        String title;
        String time;
        String creator;
        String subject;
        String summary;
    };

    enum
    {
        ATOM,
        ELEMENTS,
        TERMS
    };
    std::vector<Namespace<String>> namespaces{
        {u"http://www.w3.org/2005/Atom", u"atom"},
        {u"http://purl.org/dc/elements/1.1/", u"dc"},
        {u"http://purl.org/dc/terms/", u"dcterms"},
    };
    Name<String> feed{namespaces[ATOM], u"feed"};
    Name<String> entry{namespaces[ATOM], u"entry"};
    Name<String> id{namespaces[ATOM], u"id"};
    Name<String> title{namespaces[ATOM], u"title"};
    Name<String> link{namespaces[ATOM], u"link"};
    Name<String> reference{u"href"};
    Name<String> updated{namespaces[ATOM], u"updated"};
    Name<String> creator{namespaces[ELEMENTS], u"creator"};
    Name<String> subject{namespaces[ELEMENTS], u"subject"};
    Name<String> issued{namespaces[TERMS], u"issued"};
    Name<String> summary{namespaces[ATOM], u"summary"};
    std::vector<Entry> entries;
};

} // namespace benchmarks
