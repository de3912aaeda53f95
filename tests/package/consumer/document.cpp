// A program that uses only the installed interface of the checked layer.
#include <tarn/document/Document.hpp>

#include <chrono>
#include <iostream>
#include <string>

namespace {

using namespace tarn::document;

constexpr Namespace SPACE{"urn:late", "l"};
constexpr Name ROOT{SPACE, "root"}, COUNT{"count"};

// Written before main, from the constructor of a static object.
const std::string early = [] {
    std::string xml;
    Document document(xml, {Layout::none});
    document.root("early").text(std::chrono::system_clock::time_point());
    document.finish();
    return xml;
}();

} // namespace

int main()
{
    std::string xml;
    Document document([&xml](std::string_view bytes) { xml += bytes; });
    Element root = document.root(ROOT);
    root.attribute(COUNT, 42).raw(Fragment::of(u"<"));
    std::string refused;
    try {
        root.text("\x01");
    } catch (const Error& error) {
        refused = error.what();
    }
    document.finish();
    const std::string declaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    const bool isRight =
        early == declaration + "<early>1970-01-01T00:00:00Z</early>" &&
        xml == declaration + "\n" + R"(<l:root xmlns:l="urn:late" count="42">&lt;</l:root>)" &&
        refused == "l:root: U+0001 is not a character of XML 1.0";
    std::cout << (isRight ? "as expected" : "wrong:\n" + early + xml + refused) << '\n';
    return isRight ? 0 : 1;
}
