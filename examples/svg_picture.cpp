// Draws a bar chart as an SVG picture, with a title that screen readers find, and a link.
#include <tarn/utils/num_to_string.hpp>
#include <tarn/xml/XmlWriter.hpp>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace {

using tarn::utils::num_to_string;

const std::u16string NONE;
const std::u16string SVG = u"http://www.w3.org/2000/svg";
const std::u16string XLINK = u"http://www.w3.org/1999/xlink";

struct Bar
{
    std::u16string label;
    unsigned long metres;
    std::u16string colour;
};

const std::vector<Bar> BARS = {
    {u"Mont Blanc", 4806, u"#4c78a8"},
    {u"Dufourspitze", 4634, u"#72b7b2"},
    {u"Matterhorn", 4478, u"#e45756"},
    {u"Gro\u00DFglockner", 3798, u"#f58518"},
};

// All in pixels.
constexpr unsigned long WIDTH = 520;
constexpr unsigned long ROW_HEIGHT = 36;
constexpr unsigned long BAR_HEIGHT = 24;
constexpr unsigned long BAR_LEFT = 130;
constexpr unsigned long LONGEST_BAR = 300;
constexpr unsigned long GAP = 8;
constexpr unsigned long TOP = 56;

class Picture
{
public:
    explicit Picture(tarn::utils::XmlWriter& writer) : writer(writer) {}

    void start(const std::u16string& title, unsigned long height)
    {
        writer.writeStartDocument();
        writer.registerDefaultNamespace(SVG);
        writer.writeStartElement(u"svg", SVG, NONE);
        writer.writeNamespace(XLINK, u"xlink");
        writer.writeAttribute(u"viewBox",
                              u"0 0 " + num_to_string(WIDTH) + u' ' + num_to_string(height));
        writer.writeAttribute(u"font-family", u"sans-serif");
        writer.writeElement(u"title", SVG, title);
    }

    void rectangle(unsigned long x, unsigned long y, unsigned long width, unsigned long height,
                   const std::u16string& fill)
    {
        writer.writeStartElement(u"rect", SVG, NONE);
        number(u"x", x);
        number(u"y", y);
        number(u"width", width);
        number(u"height", height);
        writer.writeAttribute(u"fill", fill);
        writer.writeEndElement();
    }

    void text(unsigned long x, unsigned long y, const std::u16string& anchor,
              const std::u16string& content)
    {
        writer.writeStartElement(u"text", SVG, NONE);
        number(u"x", x);
        number(u"y", y);
        writer.writeAttribute(u"text-anchor", anchor);
        writer.writeValue(content);
        writer.writeEndElement();
    }

    void startLink(const std::u16string& target)
    {
        writer.writeStartElement(u"a", SVG, NONE);
        writer.writeAttribute(u"href", XLINK, target);
    }

    void endLink() { writer.writeEndElement(); }

private:
    void number(const std::u16string& name, unsigned long value)
    {
        writer.writeAttribute(name, num_to_string(value));
    }

    tarn::utils::XmlWriter& writer;
};

void drawBar(Picture& picture, const Bar& bar, unsigned long top, unsigned long highest)
{
    const unsigned long length = bar.metres * LONGEST_BAR / highest;
    const unsigned long baseline = top + BAR_HEIGHT - GAP;
    picture.text(BAR_LEFT - GAP, baseline, u"end", bar.label);
    picture.rectangle(BAR_LEFT, top, length, BAR_HEIGHT, bar.colour);
    picture.text(BAR_LEFT + length + GAP, baseline, u"start", num_to_string(bar.metres) + u" m");
}

} // namespace

int main()
{
    const std::u16string title = u"Height & rank of four Alpine peaks";
    const unsigned long height = TOP + ROW_HEIGHT * BARS.size() + GAP;
    const auto lower = [](const Bar& left, const Bar& right) { return left.metres < right.metres; };
    const unsigned long highest = std::max_element(BARS.begin(), BARS.end(), lower)->metres;

    tarn::utils::XmlWriter writer(std::cout);
    Picture picture(writer);
    picture.start(title, height);
    picture.rectangle(0, 0, WIDTH, height, u"#ffffff");
    picture.startLink(u"https://en.wikipedia.org/wiki/Alps");
    picture.text(WIDTH / 2, TOP / 2, u"middle", title);
    picture.endLink();
    for (std::size_t row = 0; row < BARS.size(); ++row) {
        drawBar(picture, BARS[row], TOP + ROW_HEIGHT * row, highest);
    }
    writer.writeEndDocument();
    std::cout << '\n';
    return std::cout ? 0 : 1;
}
