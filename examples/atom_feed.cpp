// Writes an Atom feed whose entries carry Dublin Core terms: two namespaces, one of them the
// default.
#include <tarn/document/Document.hpp>

#include <chrono>
#include <exception>
#include <iostream>
#include <string_view>

namespace {

using namespace std::chrono_literals;
using namespace tarn::document;

constexpr Namespace ATOM{"http://www.w3.org/2005/Atom"};
constexpr Namespace TERMS{"http://purl.org/dc/terms/", "dc"};
constexpr Name FEED{ATOM, "feed"}, ENTRY{ATOM, "entry"}, TITLE{ATOM, "title"}, ID{ATOM, "id"},
    UPDATED{ATOM, "updated"}, AUTHOR{ATOM, "author"}, NAME{ATOM, "name"}, LINK{ATOM, "link"},
    SUMMARY{ATOM, "summary"}, SPATIAL{TERMS, "spatial"};

struct Entry
{
    std::string_view title;
    std::string_view id;
    std::chrono::sys_seconds updated;
    std::string_view link;
    std::string_view summary;
    std::string_view spatial;
};

constexpr Entry ENTRIES[] = {
    {"Crossing the Grand Col Ferret", "urn:uuid:1225c695-cfb8-4ebb-aaaa-80da344efa6a",
     std::chrono::sys_days(2026y / 7 / 14) + 18h + 30min, "https://example.org/tracks?day=3&part=a",
     "Snow above 2300 m; poles & gaiters helped.", "Val Ferret"},
    {"Zermatt → Gornergrat", "urn:uuid:60a76c80-d399-11d9-b93c-0003939e0af6",
     std::chrono::sys_days(2026y / 7 / 12) + 20h + 5min, "https://example.org/tracks?day=1&part=b",
     "Visibility < 50 m on the ridge.", "Valais"},
};

void writeLink(Element& parent, std::string_view relation, std::string_view target)
{
    parent.child(LINK).attribute("rel", relation).attribute("href", target);
}

} // namespace

int main()
{
    try {
        Document document(std::cout);
        Element feed = document.root(FEED);
        // Declared once here; each entry would declare it again otherwise.
        feed.declare(TERMS);
        feed.add(TITLE, "Mountains & Lakes").add(ID, "https://example.org/feed");
        feed.add(UPDATED, ENTRIES[0].updated);
        feed.child(AUTHOR).add(NAME, "José Żak");
        writeLink(feed, "self", "https://example.org/feed");
        for (const Entry& each : ENTRIES) {
            Element entry = feed.child(ENTRY);
            entry.add(TITLE, each.title).add(ID, each.id).add(UPDATED, each.updated);
            writeLink(entry, "alternate", each.link);
            entry.add(SUMMARY, each.summary).add(SPATIAL, each.spatial);
        }
        document.finish();
        std::cout << '\n' << std::flush;
    } catch (const std::exception& error) {
        std::cerr << "atom_feed: " << error.what() << '\n';
        return 1;
    }
    return std::cout ? 0 : 1;
}
