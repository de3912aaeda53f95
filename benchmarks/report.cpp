// Usage: benchmark-report RESULTS.json
// Prints what benchmark-writers measured: the time of each other writer over the time of XmlWriter,
// and over that of the checked layer.
#include "benchmarks/Results.hpp"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <sstream>

namespace benchmarks {

namespace {

std::string fixed(double value, int decimals)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << value;
    return text.str();
}

std::string ratioCell(const Results& results, const std::string& document, const Peer& peer,
                      const char* ours)
{
    const std::optional<double> ratio = results.ratio(document, std::string(peer.name), ours);
    if (!ratio) {
        return results.has(peer.name) ? "other output" : "absent";
    }
    return fixed(*ratio, 2);
}

/// The time of our writer with @p target, over its time with a byte string.
std::string otherTargetCell(const Results& results, const std::string& document,
                            const std::string& target)
{
    const std::optional<double> ratio = results.ratio(document, std::string(OURS) + ' ' + target);
    return ratio ? fixed(*ratio, 2) : "";
}

/// Our time over that of the least code that makes the same bytes.
std::string byHandCell(const Results& results, const std::string& document)
{
    const std::optional<double> ratio = results.ratio(document, std::string(BY_HAND.name));
    return ratio ? fixed(1 / *ratio, 2) : "";
}

/// The time that two threads need for one document each, over the time of one thread for one.
std::string threadsCell(const Results& results, const std::string& document)
{
    // The benchmark library gives the time for each document that either has written.
    const std::optional<double> ratio =
        results.ratio(document, std::string(OURS) + "/real_time/threads:2");
    return ratio ? fixed(2 * *ratio, 2) : "";
}

/// The largest variation among @p ours and the other writers of one document.
std::string variationCell(const Results& results, const std::string& document, const char* ours)
{
    double largest = results.find(document, ours)->variation;
    for (const Peer& peer : PEERS) {
        if (const auto* const measured = results.find(document, std::string(peer.name))) {
            largest = std::max(largest, measured->variation);
        }
    }
    return "±" + fixed(100 * largest, 0) + " %";
}

using Row = std::vector<std::string>;

/// The beginning of a heading, up to the other writers.
Row headingWithPeers(const Results& results)
{
    Row heading{"document", "MB/s"};
    for (const Peer& peer : PEERS) {
        const std::string version = results.context(std::string(peer.name));
        heading.push_back(std::string(peer.title) + (version.empty() ? "" : ' ' + version));
    }
    return heading;
}

/// The beginning of a row, up to the other writers; nothing if @p ours did not write the document.
Row rowWithPeers(const Results& results, const std::string& document, const char* ours)
{
    const Results::Measurement* const measured = results.find(document, ours);
    if (measured == nullptr) {
        return {};
    }
    Row row{document, fixed(measured->megabytesPerSecond, 0)};
    for (const Peer& peer : PEERS) {
        row.push_back(ratioCell(results, document, peer, ours));
    }
    return row;
}

std::vector<Row> table(const Results& results)
{
    Row heading = headingWithPeers(results);
    heading.insert(heading.end(), {"over by hand", "u16string", "ostream", "2 threads", "spread"});
    std::vector<Row> rows{heading, Row(heading.size())};
    for (const std::string& document : results.documents()) {
        Row row = rowWithPeers(results, document, OURS);
        if (row.empty()) {
            continue;
        }
        row.push_back(byHandCell(results, document));
        row.push_back(otherTargetCell(results, document, "u16string"));
        row.push_back(otherTargetCell(results, document, "ostream"));
        row.push_back(threadsCell(results, document));
        row.push_back(variationCell(results, document, OURS));
        rows.push_back(row);
    }
    return rows;
}

std::vector<Row> tableOfLayer(const Results& results)
{
    Row heading = headingWithPeers(results);
    heading.insert(heading.end(), {"over XmlWriter", "from UTF-16", "spread"});
    std::vector<Row> rows{heading, Row(heading.size())};
    for (const std::string& document : results.documents()) {
        Row row = rowWithPeers(results, document, LAYER);
        if (row.empty()) {
            continue;
        }
        row.push_back(fixed(results.ratio(document, LAYER, OURS).value_or(0), 2));
        row.push_back(fixed(results.ratio(document, LAYER_FED_UTF16, LAYER).value_or(0), 2));
        row.push_back(variationCell(results, document, LAYER));
        rows.push_back(row);
    }
    return rows;
}

/// @return the number of characters of UTF-8 @p text.
std::size_t width(const std::string& text)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

/// Prints the rows as a Markdown table. An empty cell of the second row becomes the line below the
/// heading.
void print(const std::vector<Row>& rows)
{
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < rows[row].size(); ++column) {
            std::size_t widest = 0;
            for (const Row& each : rows) {
                widest = std::max(widest, width(each[column]));
            }
            const std::string& cell = rows[row][column];
            std::cout << "| " << cell << std::string(widest - width(cell), row == 1 ? '-' : ' ')
                      << ' ';
        }
        std::cout << "|\n";
    }
}

} // namespace

} // namespace benchmarks

int main(int argumentCount, char** arguments)
{
    using namespace benchmarks;
    if (argumentCount != 2) {
        std::cerr << "Usage: benchmark-report RESULTS.json\n";
        return 2;
    }
    try {
        const Results results(arguments[1]);
        std::cout
            << results.context("processor") << ", " << results.context("date") << ", "
            << results.context("compiler") << "\n\n"
            << "Other writers: their time over ours, medians. MB/s: our UTF-8 output to a string.\n"
               "over by hand: our time over that of the least code that makes the same bytes. "
               "u16string,\n"
               "ostream: our time to that target over our time to a string. 2 threads: the time of "
               "two\n"
               "writers at once over that of one. spread: the largest standard deviation in the "
               "row.\n\n";
        print(table(results));
        std::cout
            << "\nThe same for tarn::document, with all its checks, fed UTF-8. over XmlWriter: "
               "its time over that\n"
               "of XmlWriter. from UTF-16: its time when fed UTF-16 over its time when fed "
               "UTF-8.\n\n";
        print(tableOfLayer(results));
    } catch (const std::exception& error) {
        std::cerr << "benchmark-report: " << error.what() << '\n';
        return 1;
    }
}
