// Every call that a document refuses, and the message of its exception: the tables of
// docs/guide.md.
#include <tarn/document/Document.hpp>

#include <chrono>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace tarn::document;
using Years = std::chrono::duration<double, std::chrono::years::period>;

void startTable(const char* name)
{
    std::cout << "== " << name << "\n| Call | `what()` |\n|---|---|\n";
}

/// Makes calls on a document whose root is open and has an attribute `id`.
void show(const char* calls, const std::function<void(Document&, Element&)>& make)
{
    std::string xml;
    Document document(xml);
    Element root = document.root("root");
    root.attribute("id", 7);
    std::string message = "is not refused";
    try {
        make(document, root);
    } catch (const Error& error) {
        message = error.what();
    }
    std::cout << "| `" << calls << "` | `" << message << "` |\n";
}

// A macro, because the calls are shown, too. An exception begins at the last one.
#define SHOW(...)                                                                                  \
    show(#__VA_ARGS__,                                                                             \
         []([[maybe_unused]] Document& document, [[maybe_unused]] Element& root) { __VA_ARGS__; })

void showText()
{
    startTable("refusals-text");
    SHOW(root.text("\x01"));
    SHOW(root.attribute("note", "caf\xE9"));
    SHOW(root.add("name", u"ab\xD800"));
    SHOW(root.text(static_cast<const char*>(nullptr)));
    SHOW(root.add("when", std::chrono::sys_time<Years>(Years(1e30))));
    SHOW(root.base64(nullptr, 1));
    SHOW(Fragment::of("\xFF"));
    SHOW(Fragment::trusted("<b>\x02</b>"));
}

void showNames()
{
    startTable("refusals-names");
    SHOW(root.child("2nd"));
    SHOW(root.add("a:b", 1));
    SHOW(root.child(Name(Namespace("two words", "p"), "c")));
    SHOW(root.attribute(Name(Namespace("urn:a", "xml"), "b"), 1));
    SHOW(root.declare(Namespace("http://www.w3.org/XML/1998/namespace", "x")));
}

void showAttributes()
{
    startTable("refusals-attributes");
    SHOW(root.attribute("id", 8));
    SHOW(root.attribute("xmlns", "urn:a"));
    SHOW(root.attribute(Name(Namespace("urn:a"), "b"), 1));
    SHOW(root.text("t").attribute("late", 1));
    SHOW(root.text("t").declare(Namespace("urn:a", "a")));
    SHOW(root.declare(Namespace("urn:a")));
}

void showMarkup()
{
    startTable("refusals-markup");
    SHOW(root.comment("a--b"));
    SHOW(root.comment("a-"));
    SHOW(root.comment("a\r\nb"));
    SHOW(root.instruction("XML"));
    SHOW(root.instruction(Name(Namespace("urn:a", "a"), "b")));
    SHOW(root.instruction("php", "a ?> b"));
    SHOW(root.instruction("php", " a"));
    SHOW(root.instruction("php", "a\r\nb"));
}

void showDoctypes()
{
    startTable("refusals-doctype");
    SHOW(document.doctype("root"));
    SHOW(document.reset(); document.doctype("root"); document.doctype("root"));
    SHOW(document.reset(); document.doctype(Name(Namespace("urn:a", "a"), "root")));
    SHOW(document.reset(); document.doctype("root", "-//A//B"));
    SHOW(document.reset(); document.doctype("root", "<", "root.dtd"));
    SHOW(document.reset(); document.doctype("root", "A  B", "root.dtd"));
    SHOW(document.reset(); document.doctype("root", "", "\"'"));
    SHOW(document.reset(); document.doctype("root", "", "a\rb"));
}

void showOrder()
{
    startTable("refusals-order");
    SHOW(document.root("second"));
    SHOW(document.comment("c"));
    SHOW(document.instruction("p"));
    SHOW(root.end(); root.text("t"));
    SHOW(Element child = root.child("c"); root.text("t"); child.text("u"));
    // NOLINTNEXTLINE(bugprone-use-after-move, clang-analyzer-cplusplus.Move): what is shown
    SHOW(Element other = std::move(root); root.text("t"));
    SHOW(document.reset(); document.finish());
    SHOW(document.finish(); document.comment("c"));
}

void showTargets()
{
    startTable("refusals-targets");
    SHOW(Document nowhere{std::function<void(std::string_view)>()});
    SHOW(Document* self = nullptr; Document echo([&](std::string_view) { self->flush(); });
         (self = &echo)->root("r"); echo.flush());
    SHOW(std::ofstream file; Document lost(file); lost.root("r"); lost.flush());
    SHOW(
        std::ofstream file; Document lost(file); lost.root("r");
        try { lost.flush(); } catch (const Error&) {} lost.flush());
}

} // namespace

int main()
{
    showText();
    showNames();
    showAttributes();
    showMarkup();
    showDoctypes();
    showOrder();
    showTargets();
    return std::cout ? 0 : 1;
}
