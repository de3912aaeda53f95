// Draws a bar chart as an SVG picture, with a title that screen readers find, and a link.
#include <tarn/document/Document.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

namespace {

using namespace tarn::document;

constexpr Namespace SVG{"http://www.w3.org/2000/svg"};
constexpr Namespace XLINK{"http://www.w3.org/1999/xlink", "xlink"};
constexpr Name PICTURE{SVG, "svg"}, TITLE{SVG, "title"}, RECTANGLE{SVG, "rect"}, TEXT{SVG, "text"},
    LINK{SVG, "a"}, TARGET{XLINK, "href"};

struct Bar
{
    std::string_view label;
    unsigned metres;
    std::string_view colour;
};

constexpr Bar BARS[] = {
    {"Mont Blanc", 4806, "#4c78a8"},
    {"Dufourspitze", 4634, "#72b7b2"},
    {"Matterhorn", 4478, "#e45756"},
    {"Großglockner", 3798, "#f58518"},
};

// All in pixels.
constexpr unsigned WIDTH = 520;
constexpr unsigned ROW_HEIGHT = 36;
constexpr unsigned BAR_HEIGHT = 24;
constexpr unsigned BAR_LEFT = 130;
constexpr unsigned LONGEST_BAR = 300;
constexpr unsigned GAP = 8;
constexpr unsigned TOP = 56;
constexpr unsigned HEIGHT = TOP + ROW_HEIGHT * std::size(BARS) + GAP;

void drawRectangle(Element& parent, unsigned x, unsigned y, unsigned width, unsigned height,
                   std::string_view fill)
{
    Element rectangle = parent.child(RECTANGLE).attribute("x", x).attribute("y", y);
    rectangle.attribute("width", width).attribute("height", height).attribute("fill", fill);
}

/// Returns the text element, to be filled.
Element startText(Element& parent, unsigned x, unsigned y, std::string_view anchor)
{
    return parent.child(TEXT).attribute("x", x).attribute("y", y).attribute("text-anchor", anchor);
}

void drawBar(Element& picture, const Bar& bar, unsigned top, unsigned highest)
{
    const unsigned length = bar.metres * LONGEST_BAR / highest;
    const unsigned baseline = top + BAR_HEIGHT - GAP;
    startText(picture, BAR_LEFT - GAP, baseline, "end").text(bar.label);
    drawRectangle(picture, BAR_LEFT, top, length, BAR_HEIGHT, bar.colour);
    startText(picture, BAR_LEFT + length + GAP, baseline, "start").text(bar.metres).text(" m");
}

} // namespace

int main()
{
    try {
        constexpr const char* TITLE_TEXT = "Height & rank of four Alpine peaks";
        Document document(std::cout);
        Element picture = document.root(PICTURE).declare(XLINK);
        picture.attribute("viewBox", "0 0 " + std::to_string(WIDTH) + ' ' + std::to_string(HEIGHT));
        picture.attribute("font-family", "sans-serif").add(TITLE, TITLE_TEXT);
        drawRectangle(picture, 0, 0, WIDTH, HEIGHT, "#ffffff");
        Element link = picture.child(LINK).attribute(TARGET, "https://en.wikipedia.org/wiki/Alps");
        startText(link, WIDTH / 2, TOP / 2, "middle").text(TITLE_TEXT);
        const unsigned highest = std::ranges::max(BARS, {}, &Bar::metres).metres;
        for (unsigned top = TOP; const Bar& bar : BARS) {
            drawBar(picture, bar, top, highest);
            top += ROW_HEIGHT;
        }
        document.finish();
        std::cout << '\n' << std::flush;
    } catch (const std::exception& error) {
        std::cerr << "svg_picture: " << error.what() << '\n';
        return 1;
    }
    return std::cout ? 0 : 1;
}
