// Draws what benchmark-writers measured as a bar chart in SVG, which XmlWriter writes.
#include "benchmarks/Results.hpp"
#include "benchmarks/text_forms.hpp"

#include "tarn/xml/XmlWriter.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>

namespace benchmarks {

namespace {

struct Group
{
    const char* document;
    const char16_t* description;
};

constexpr Group GROUPS[] = {
    {"records", u"small elements, two attributes each"},
    {"feed", u"names in three namespaces"},
    {"prose", u"long paragraphs of ASCII"},
    {"multilingual", u"long paragraphs in many scripts"},
    {"markup", u"text dense in < > & \" '"},
};

// In pixels.
constexpr double WIDTH = 880;
constexpr double MARGIN = 28;
constexpr double TITLE_BASELINE = 42;
constexpr double SUBTITLE_BASELINE = 66;
constexpr double LEGEND_BASELINE = 98;
constexpr double PLOT_TOP = 136;
constexpr double PLOT_LEFT = 270;
constexpr double PLOT_RIGHT = 816;
constexpr double BAR_HEIGHT = 16;
constexpr double BAR_PITCH = 19;
constexpr double GROUP_GAP = 22;
constexpr double AXIS_HEIGHT = 26;
constexpr double FOOTER_HEIGHT = 80;
constexpr double LINE_HEIGHT = 18;
constexpr double VALUE_GAP = 6;
constexpr double SMALL_TEXT_RISE = 4; // from the middle of a line of small text to its baseline

/// Light colours, and dark ones where the reader's system prefers them.
constexpr const char16_t* STYLE = uR"(
text { font-family: system-ui, -apple-system, "Segoe UI", Roboto, "DejaVu Sans", sans-serif; font-size: 12px; }
.note { fill: #57606a; }
.title { font-size: 20px; font-weight: 600; fill: #1f2328; }
.name { font-size: 14px; font-weight: 600; fill: #1f2328; }
.value { fill: #1f2328; stroke: #ffffff; stroke-width: 4px; stroke-linejoin: round; paint-order: stroke; }
.page { fill: #ffffff; stroke: #d0d7de; }
.grid { stroke: #d8dee4; }
.ours { stroke: #1f2328; stroke-dasharray: 4 3; }
.qt { fill: #2f9e6b; }
.libxml2 { fill: #d9822b; }
.tinyxml2 { fill: #3b82c4; }
.pugixml { fill: #9a6fc0; }
.by-hand { fill: #8c959f; }
@media (prefers-color-scheme: dark) {
.note { fill: #9198a1; }
.title, .name, .value { fill: #f0f6fc; }
.value { stroke: #0d1117; }
.page { fill: #0d1117; stroke: #3d444d; }
.grid { stroke: #2a313c; }
.ours { stroke: #f0f6fc; }
}
)";

std::u16string decimal(double value, int decimals)
{
    char digits[32];
    const std::to_chars_result result = std::to_chars(std::begin(digits), std::end(digits), value,
                                                      std::chars_format::fixed, decimals);
    return {std::begin(digits), result.ptr};
}

/// Writes elements of SVG.
class Drawing
{
public:
    explicit Drawing(tarn::utils::XmlWriter& writer) : writer(writer) {}

    void start(const std::u16string& name) { writer.writeStartElement(name, SVG, u""); }

    void attribute(const std::u16string& name, const std::u16string& value)
    {
        writer.writeAttribute(name, value);
    }

    void attribute(const std::u16string& name, double value) { attribute(name, decimal(value, 1)); }

    void end() { writer.writeEndElement(); }

    void content(const std::u16string& name, const std::u16string& text)
    {
        writer.writeElement(name, SVG, text);
    }

    void rectangle(const std::u16string& kind, double x, double y, double width, double height,
                   double radius)
    {
        start(u"rect");
        attribute(u"class", kind);
        attribute(u"x", x);
        attribute(u"y", y);
        attribute(u"width", width);
        attribute(u"height", height);
        attribute(u"rx", radius);
        end();
    }

    void verticalLine(const std::u16string& kind, double x, double top, double bottom)
    {
        start(u"line");
        attribute(u"class", kind);
        attribute(u"x1", x);
        attribute(u"y1", top);
        attribute(u"x2", x);
        attribute(u"y2", bottom);
        end();
    }

    void text(const std::u16string& kind, const std::u16string& anchor, double x, double baseline,
              const std::u16string& content)
    {
        start(u"text");
        attribute(u"class", kind);
        attribute(u"text-anchor", anchor);
        attribute(u"x", x);
        attribute(u"y", baseline);
        writer.writeValue(content);
        end();
    }

    inline static const std::u16string SVG = u"http://www.w3.org/2000/svg";

private:
    tarn::utils::XmlWriter& writer;
};

class Chart
{
public:
    Chart(const Results& results, tarn::utils::XmlWriter& writer)
        : results(results), writer(writer), drawing(writer)
    {
        std::ranges::copy_if(PEERS, std::back_inserter(peers),
                             [&](const Peer& peer) { return results.has(peer.name); });
        if (results.has(BY_HAND.name)) {
            peers.push_back(BY_HAND);
        }
        double largest = 1;
        for (const Group& group : GROUPS) {
            for (const Peer& peer : peers) {
                largest = std::max(largest, ratio(group, peer).value_or(0));
            }
        }
        step = axisStep(largest);
        axisEnd = std::ceil(largest / step) * step;
        groupHeight = BAR_PITCH * static_cast<double>(peers.size()) + GROUP_GAP;
        plotBottom = PLOT_TOP + groupHeight * static_cast<double>(std::size(GROUPS));
    }

    void draw()
    {
        const double height = plotBottom + AXIS_HEIGHT + FOOTER_HEIGHT;
        writer.writeStartDocument();
        writer.registerDefaultNamespace(Drawing::SVG);
        drawing.start(u"svg");
        drawing.attribute(u"viewBox", u"0 0 " + decimal(WIDTH, 0) + u' ' + decimal(height, 0));
        drawing.attribute(u"width", WIDTH);
        drawing.attribute(u"height", height);
        drawing.attribute(u"role", u"img");
        drawing.content(u"title", TITLE);
        drawing.content(u"style", STYLE);
        drawing.rectangle(u"page", 0.5, 0.5, WIDTH - 1, height - 1, 8);
        drawHeading();
        drawAxis();
        forEachGroup([this](const Group& group, double top) {
            drawNames(group, top);
            drawBars(group, top);
        });
        drawOurs();
        forEachGroup([this](const Group& group, double top) { drawValues(group, top); });
        drawFooter(height - FOOTER_HEIGHT + LINE_HEIGHT);
        writer.writeEndDocument();
    }

private:
    inline static const std::u16string TITLE = u"How many times as long other XML writers take";

    std::optional<double> ratio(const Group& group, const Peer& peer) const
    {
        return results.ratio(group.document, std::string(peer.name));
    }

    /// The smallest step of 1, 2 or 5 times a power of ten that gives few enough lines.
    static double axisStep(double largest)
    {
        constexpr double MOST_LINES = 10;
        for (double power = 1;; power *= 10) {
            for (const double factor : {1, 2, 5}) {
                if (largest / (factor * power) <= MOST_LINES) {
                    return factor * power;
                }
            }
        }
    }

    double position(double value) const
    {
        return PLOT_LEFT + (PLOT_RIGHT - PLOT_LEFT) * value / axisEnd;
    }

    void drawHeading()
    {
        drawing.text(u"title", u"start", MARGIN, TITLE_BASELINE, TITLE);
        drawing.text(u"note", u"start", MARGIN, SUBTITLE_BASELINE,
                     u"Time for the same document over the time of tarn::utils::XmlWriter, each "
                     u"writing UTF-8 to memory");
        constexpr double SWATCH = 12;
        constexpr double LEGEND_PITCH = 140;
        double x = MARGIN;
        for (const Peer& peer : peers) {
            drawing.rectangle(toUtf16(peer.name), x, LEGEND_BASELINE - SWATCH + 2, SWATCH, SWATCH,
                              2);
            drawing.text(u"value", u"start", x + SWATCH + VALUE_GAP, LEGEND_BASELINE,
                         toUtf16(peer.title) + u' ' +
                             toUtf16(results.context(std::string(peer.name))));
            x += LEGEND_PITCH;
        }
    }

    void drawAxis()
    {
        for (int line = 0; line * step <= axisEnd; ++line) {
            const double value = line * step;
            drawing.verticalLine(u"grid", position(value), PLOT_TOP, plotBottom);
            drawing.text(u"note", u"middle", position(value), plotBottom + AXIS_HEIGHT - 8,
                         decimal(value, 0) + u'×');
        }
    }

    template <class Draw>
    void forEachGroup(Draw draw) const
    {
        double top = PLOT_TOP + GROUP_GAP / 2;
        for (const Group& group : GROUPS) {
            draw(group, top);
            top += groupHeight;
        }
    }

    void drawNames(const Group& group, double top)
    {
        const double middle = top + (groupHeight - GROUP_GAP) / 2;
        drawing.text(u"name", u"end", PLOT_LEFT - 14, middle - 3, toUtf16(group.document));
        drawing.text(u"note", u"end", PLOT_LEFT - 14, middle + 15, group.description);
    }

    void drawBars(const Group& group, double top)
    {
        for (const Peer& peer : peers) {
            if (const std::optional<double> value = ratio(group, peer)) {
                drawing.rectangle(toUtf16(peer.name), PLOT_LEFT, top, position(*value) - PLOT_LEFT,
                                  BAR_HEIGHT, 2);
            }
            top += BAR_PITCH;
        }
    }

    void drawValues(const Group& group, double top)
    {
        for (const Peer& peer : peers) {
            if (const std::optional<double> value = ratio(group, peer)) {
                drawing.text(u"value", u"start", position(*value) + VALUE_GAP,
                             top + BAR_HEIGHT / 2 + SMALL_TEXT_RISE, decimal(*value, 1) + u'×');
            }
            top += BAR_PITCH;
        }
    }

    /// The line that every bar is measured against.
    void drawOurs()
    {
        drawing.verticalLine(u"ours", position(1), PLOT_TOP - 4, plotBottom);
        drawing.text(u"value", u"middle", position(1), PLOT_TOP - 10, u"XmlWriter = 1");
    }

    void drawFooter(double baseline)
    {
        const std::string date = results.context("date").substr(0, DATE_LENGTH);
        drawing.text(u"note", u"start", MARGIN, baseline,
                     u"XmlWriter and Qt are given UTF-16 and manage namespaces; the others are "
                     u"given UTF-8 and "
                     u"qualified names.");
        drawing.text(u"note", u"start", MARGIN, baseline + LINE_HEIGHT,
                     u"By hand: the least code that makes the same bytes, with the same kernels.");
        drawing.text(u"note", u"start", MARGIN, baseline + 2 * LINE_HEIGHT,
                     u"Medians of one run, with kernels for AVX2, on " +
                         toUtf16(results.context("processor") + ", " + results.context("compiler") +
                                 ", " + date) +
                         u'.');
    }

    static constexpr std::size_t DATE_LENGTH = 10; // YYYY-MM-DD

    const Results& results;
    tarn::utils::XmlWriter& writer;
    Drawing drawing;
    std::vector<Peer> peers; // those that were measured
    double step = 0;
    double axisEnd = 0;
    double groupHeight = 0;
    double plotBottom = 0;
};

} // namespace

} // namespace benchmarks

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::cerr << "Usage: benchmark-chart RESULTS.json CHART.svg\n";
        return 2;
    }
    try {
        const benchmarks::Results results(arguments[1]);
        std::ofstream file(arguments[2]);
        tarn::utils::XmlWriter writer(file);
        benchmarks::Chart(results, writer).draw();
        file.close();
        if (!file) {
            throw std::runtime_error(std::string(arguments[2]) + ": cannot be written");
        }
    } catch (const std::exception& error) {
        std::cerr << "benchmark-chart: " << error.what() << '\n';
        return 1;
    }
}
