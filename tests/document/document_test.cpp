// The checked layer: what it writes, what it refuses, and what a parser reads back.

#include "support/DocumentCalls.hpp"
#include "support/random_inputs.hpp"

#include <tarn/document/Document.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>

namespace tarn::tests {

namespace {

using namespace document;
using namespace std::string_literals;

constexpr Namespace ATOM{"http://www.w3.org/2005/Atom"};
constexpr Namespace TERMS{"http://purl.org/dc/terms/", "dc"};
static_assert(TERMS.isChecked() && Name("a").isChecked() && Name(TERMS, "a").isChecked());
constexpr Options INDENTED{Layout::indented, Unrepresentable::refuse, false};
constexpr Options COMPACT{Layout::none, Unrepresentable::refuse, false};

/// What @p write makes of a document with the root `r`.
std::string inRoot(const std::function<void(Element&)>& write, Options options = COMPACT)
{
    std::string target;
    Document document(target, options);
    {
        Element root = document.root("r");
        write(root);
    }
    document.finish();
    return target;
}

struct Case
{
    std::function<void(Element&)> write;
    std::string text;
};

TEST(Document, WritesWhatItIsTold)
{
    const std::chrono::sys_seconds time = std::chrono::sys_days(std::chrono::year(2026) / 11 / 25) +
                                          std::chrono::hours(18) + std::chrono::seconds(2);
    const Case cases[] = {
        {[](Element&) {}, "<r/>"},
        {[](Element& r) { r.text(""); }, "<r></r>"},
        {[](Element& r) { r.attribute("a", "<\t\n\r\"'&>").text("<\t\n\r\"'&>"); },
         "<r a=\"&lt;&#9;&#10;&#13;&quot;&apos;&amp;&gt;\">&lt;\t\n&#13;&quot;&apos;&amp;&gt;</r>"},
        {[](Element& r) { r.text(u"\u00E9\U0001F600").text(u8"\u4E2D").text("\xF0\x9F\x98\x80"); },
         "<r>\u00E9\U0001F600\u4E2D\U0001F600</r>"},
        {[](Element& r) { r.add("t", true).add("i", -7).add("u", 18446744073709551615u); },
         "<r><t>true</t><i>-7</i><u>18446744073709551615</u></r>"},
        {[](Element& r) {
             r.add("d", 0.1).add("f", 0.1f).add("l", 1e400L).add("n", -0.0).add("e", 1e300);
         },
         "<r><d>0.1</d><f>0.1</f><l>1e+400</l><n>-0</n><e>1e+300</e></r>"},
        {[](Element& r) {
             constexpr double INF = std::numeric_limits<double>::infinity();
             r.add("p", INF).add("m", -INF).add("n", std::numeric_limits<double>::quiet_NaN());
         },
         "<r><p>INF</p><m>-INF</m><n>NaN</n></r>"},
        {[](Element& r) {
             const auto time = std::chrono::sys_days(std::chrono::year(-5) / 1 / 1);
             r.add("b", false)
                 .add("y", std::chrono::sys_seconds(time))
                 .add("u", u"\t\r\n\U0001F600");
         },
         "<r><b>false</b><y>-0005-01-01T00:00:00Z</y><u>\t&#13;\n\U0001F600</u></r>"},
        {[time](Element& r) { r.add("s", time).add("f", time + std::chrono::milliseconds(50)); },
         "<r><s>2026-11-25T18:00:02Z</s><f>2026-11-25T18:00:02.05Z</f></r>"},
        {[](Element& r) { r.cdata("").cdata("a]]>b\rc]]"); },
         "<r><![CDATA[]]><![CDATA[a]]]]><![CDATA[>b]]>&#13;<![CDATA[c]]]]></r>"},
        {[](Element& r) { r.base64("any", 3).base64("c", 1).base64("arnal pleasure", 14); },
         "<r>YW55Y2FybmFsIHBsZWFzdXJl</r>"},
        {[](Element& r) { r.base64("a", 1).text("-").base64("ab", 2).base64(nullptr, 0); },
         "<r>YQ==-YWI=</r>"},
        {[](Element& r) {
             r.child("a").base64("a", 1);
             Element b = r.child("b");
             r.base64("a", 1);
         },
         "<r><a>YQ==</a><b/>YQ==</r>"},
        {[](Element& r) { r.comment(" a - b ").instruction("p", "d ? >").instruction("q"); },
         "<r><!-- a - b --><?p d ? >?><?q?></r>"},
        {[](Element& r) { r.raw(Fragment::of("<\r")).raw(Fragment::trusted("<b/>")); },
         "<r>&lt;&#13;<b/></r>"},
        {[](Element& r) { r.attribute(Name(XML, "lang"), "de").child(Name(XML, "x")); },
         "<r xml:lang=\"de\"><xml:x/></r>"},
        // Default namespaces.
        {[](Element& r) {
             Element feed = r.child(Name(ATOM, "a"));
             feed.add(Name(ATOM, "b"), 1).add("c", 2);
             feed.child("d").child(Name(ATOM, "e"));
         },
         "<r><a xmlns=\"http://www.w3.org/2005/Atom\"><b>1</b><c xmlns=\"\">2</c><d xmlns=\"\"><e "
         "xmlns=\"http://www.w3.org/2005/Atom\"/></d></a></r>"},
        // Prefixes.
        {[](Element& r) {
             const Namespace other("urn:o&'", "dc");
             r.child(Name(TERMS, "a"))
                 .attribute(Name(TERMS, "b"), 1)
                 .attribute(Name(other, "b"), 2)
                 .add(Name(other, "c"), 3);
             r.child(Name(other, "d"));
         },
         "<r><dc:a xmlns:dc=\"http://purl.org/dc/terms/\" dc:b=\"1\" "
         "xmlns:ns1=\"urn:o&amp;&apos;\" "
         "ns1:b=\"2\"><ns1:c>3</ns1:c></dc:a><dc:d xmlns:dc=\"urn:o&amp;&apos;\"/></r>"},
        {[](Element& r) {
             r.declare(TERMS).declare(TERMS).declare(XML);
             r.child(Name(TERMS, "a")).declare(ATOM).child(Name(ATOM, "b"));
         },
         "<r xmlns:dc=\"http://purl.org/dc/terms/\"><dc:a "
         "xmlns=\"http://www.w3.org/2005/Atom\"><b/></dc:a></r>"},
        {[](Element& r) {
             r.child(Name(ATOM, "a")).declare(ATOM).declare(TERMS);
             Element b = r.child(Name(TERMS, "b")).declare(Namespace("urn:1"));
             EXPECT_THROW(b.declare(Namespace("urn:2")), Error);
             b.attribute("c", 1);
         },
         "<r><a xmlns=\"http://www.w3.org/2005/Atom\" xmlns:dc=\"http://purl.org/dc/terms/\"/>"
         "<dc:b xmlns:dc=\"http://purl.org/dc/terms/\" xmlns=\"urn:1\" c=\"1\"/></r>"},
        // An element that takes the place of another ends it.
        {[](Element& r) {
             constexpr Name CHECKED{TERMS, "c"};
             Element a = r.child("a");
             Element b = a.child("b");
             b = r.child(CHECKED);
             EXPECT_THROW(a.text("x"), Error);
             Element moved = std::move(b);
             b = std::move(moved);
             Element& same = b;
             b = std::move(same);
             b.text("x");
         },
         "<r><a><b/></a><dc:c xmlns:dc=\"http://purl.org/dc/terms/\">x</dc:c></r>"},
        // One that is inside leaves the other open.
        {[](Element& r) {
             Element deepest = r.child("a");
             deepest = deepest.child("b");
             deepest = deepest.child("c");
             deepest.text("x");
         },
         "<r><a><b><c>x</c></b></a></r>"},
        // An operation ends what is open inside.
        {[](Element& r) {
             Element a = r.child("a");
             Element b = a.child("b");
             r.text("x");
             EXPECT_THROW(a.text("y"), Error);
             EXPECT_THROW(b.end(), Error);
         },
         "<r><a><b/></a>x</r>"},
    };
    for (const auto& [write, text] : cases) {
        EXPECT_EQ(inRoot(write), text);
    }
}

template <class View>
struct ConvertibleTo
{
    View view;
    operator View() const { return view; } // NOLINT(google-explicit-constructor): what is tested
};

TEST(Document, TakesTextOfEveryType)
{
    char buffer[] = "a";
    char16_t buffer16[] = u"b";
    char8_t buffer8[] = u8"c";
    EXPECT_EQ(inRoot([&](Element& r) {
                  r.text(buffer).text(buffer16).text(buffer8);
                  r.text(ConvertibleTo<std::string_view>{"d"});
                  r.text(ConvertibleTo<std::u16string_view>{u"e"});
                  r.text(ConvertibleTo<std::u8string_view>{u8"f"});
              }),
              "<r>abcdef</r>");
}

/// The text of a time that is so long after 1970.
template <class Duration>
std::string textOf(Duration sinceEpoch)
{
    const std::chrono::time_point<std::chrono::system_clock, Duration> time(sinceEpoch);
    const std::string text = inRoot([&](Element& r) { r.text(time); });
    return text.substr(3, text.size() - 7);
}

TEST(Document, WritesTimesOfEveryDuration)
{
    using namespace std::chrono;
    EXPECT_EQ(textOf(hours(-1)), "1969-12-31T23:00:00Z");
    EXPECT_EQ(textOf(duration<double>(-0.25)), "1969-12-31T23:59:59.75Z");
    EXPECT_EQ(textOf(duration<long long, std::pico>(1'500'000'000'999)), "1970-01-01T00:00:01.5Z");
    EXPECT_EQ(textOf(days(10'957 - 5 * 146'097)), "0000-01-01T00:00:00Z");
    // Years that std::chrono::year does not have.
    EXPECT_EQ(textOf(days(10'957 + 95 * 146'097)), "40000-01-01T00:00:00Z");
    EXPECT_EQ(textOf(days(10'957 - 105 * 146'097 - 1)), "-40001-12-31T00:00:00Z");
    EXPECT_EQ(textOf(seconds::max()), "292277026596-12-04T15:30:07Z");
    EXPECT_EQ(textOf(seconds::min()), "-292277022657-01-27T08:29:52Z");
    EXPECT_EQ(textOf(duration<long double>(0x1p53L + 0x1p-10L)),
              "285428751-11-12T07:36:32.000976562Z");
    const auto isRefused = testing::ThrowsMessage<Error>("r: the time is out of range");
    EXPECT_THAT([] { textOf(hours::max()); }, isRefused);
    EXPECT_THAT([] { textOf(duration<double>(-1e19)); }, isRefused);
    EXPECT_THAT([] { textOf(duration<double>(0x1p63)); }, isRefused);
    EXPECT_THAT([] { textOf(duration<double>(std::numeric_limits<double>::quiet_NaN())); },
                isRefused);
}

TEST(Document, LaysOutWhatHasNoText)
{
    const Case cases[] = {
        {[](Element& r) { r.child("a").child("b"); }, "<r>\n  <a>\n    <b/>\n  </a>\n</r>"},
        {[](Element& r) { r.comment("c").instruction("p"); }, "<r>\n  <!--c-->\n  <?p?>\n</r>"},
        {[](Element& r) { r.text("").add("a", "").comment("c"); }, "<r><a></a><!--c--></r>"},
        {[](Element& r) { r.add("a", "x").text("t").add("b", "y"); },
         "<r>\n  <a>x</a>t<b>y</b></r>"},
        {[](Element& r) { r.child("a").cdata("").child("b").child("c"); },
         "<r>\n  <a><![CDATA[]]><b><c/></b></a>\n</r>"},
    };
    for (const auto& [write, text] : cases) {
        EXPECT_EQ(inRoot(write, INDENTED), text);
    }
    // The blanks of one line are more than a batch, and much of a batch comes before them.
    constexpr std::size_t LEVELS = 4300;
    const std::string deep = inRoot(
        [](Element& r) {
            Element e = r.child("e");
            for (std::size_t level = 2; level < LEVELS; ++level) {
                e = e.child("e");
            }
            e.attribute("a", std::string(8000, 'a')).add("b", 1);
        },
        INDENTED);
    EXPECT_NE(deep.find("a\">\n" + std::string(2 * LEVELS, ' ') + "<b>1</b>\n"), std::string::npos);
    std::string whole;
    Document document(whole);
    document.comment("before");
    document.doctype("r", "-//A//B", "a'b");
    document.instruction("p", "d");
    document.root("r").add("a", 1);
    document.comment("after");
    document.finish();
    EXPECT_EQ(whole, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--before-->\n"
                     "<!DOCTYPE r PUBLIC \"-//A//B\" \"a'b\">\n<?p d?>\n<r>\n  <a>1</a>\n</r>\n"
                     "<!--after-->");
}

TEST(Document, RefusesWhatWouldNotBeWellFormed)
{
    const std::string text = "<r a=\"1\"";
    const std::pair<std::function<void(Element&)>, std::string> cases[] = {
        {[](Element& r) { r.text("\x1F"); }, "r: U+001F is not a character of XML 1.0"},
        {[](Element& r) { r.text(static_cast<const char8_t*>(nullptr)); },
         "r: the text is a null pointer"},
        {[](Element& r) { r.text("abc\x80"); }, "r: ill-formed UTF-8 at byte 3"},
        {[](Element& r) { r.text(u"\uFFFF"); }, "r: U+FFFF is not a character of XML 1.0"},
        {[](Element& r) { r.attribute("b", "\xED\xA0\x80"); }, "r/@b: ill-formed UTF-8 at byte 0"},
        {[](Element& r) { r.add("c", u"ab\xDC00"); }, "r/c: ill-formed UTF-16 at code unit 2"},
        {[](Element& r) { r.add("c", static_cast<const char16_t*>(nullptr)); },
         "r/c: the text is a null pointer"},
        {[](Element& r) { r.raw(Fragment::of("\xFF")); }, "/: ill-formed UTF-8 at byte 0"},
        {[](Element& r) { r.raw(Fragment::trusted("<a>\x02")); },
         "/: U+0002 is not a character of XML 1.0"},
        {[](Element& r) { r.text(static_cast<const char*>(nullptr)); },
         "r: the text is a null pointer"},
        {[](Element& r) { r.base64(nullptr, 1); }, "r: the data is a null pointer"},
        {[](Element& r) { r.attribute("a", 2); }, "r/@a: the element has this attribute already"},
        {[](Element& r) { r.attribute("xmlns", 2); },
         "r/@xmlns: \"xmlns\" declares a namespace; use declare()"},
        {[](Element& r) { r.attribute(Name(ATOM, "b"), 2); },
         "r/@b: an attribute cannot be in a namespace that wishes no prefix"},
        {[](Element& r) { r.child("a:b"); },
         "r/a:b: \"a:b\" is not a name (an NCName of Namespaces in XML 1.0)"},
        {[](Element& r) { r.child(static_cast<const char*>(nullptr)); },
         "r/: \"\" is not a name (an NCName of Namespaces in XML 1.0)"},
        {[](Element& r) { r.child(Name(Namespace("a b", "p"), "c")); },
         "r/p:c: \"a b\" with the prefix \"p\" is not allowed as a namespace"},
        {[](Element& r) { r.declare(Namespace("urn:a", "xml")); },
         "r: \"urn:a\" with the prefix \"xml\" is not allowed as a namespace"},
        {[](Element& r) { r.declare(ATOM); },
         "r: the default namespace of this element is another"},
        {[](Element& r) { r.comment("a--b"); }, "r: a comment cannot have \"--\" or end in \"-\""},
        {[](Element& r) { r.comment("a-"); }, "r: a comment cannot have \"--\" or end in \"-\""},
        {[](Element& r) { r.comment("\r"); },
         "r: a comment cannot have a carriage return: no parser gives it back"},
        {[](Element& r) { r.instruction("xMl"); },
         "r: the target of an instruction cannot be \"xMl\""},
        {[](Element& r) { r.instruction(Name(TERMS, "p")); },
         "r: the target of an instruction is in no namespace"},
        {[](Element& r) { r.instruction("p", "a?>"); },
         "r: the data of an instruction cannot have \"?>\""},
        {[](Element& r) { r.instruction("p", "\n"); },
         "r: the data of an instruction cannot begin with white space"},
        {[](Element& r) { r.instruction("p", "a\r"); },
         "r: the data of an instruction cannot have a carriage return: no parser gives it back"},
    };
    for (const auto& [refused, message] : cases) {
        std::string target;
        Document document(target, COMPACT);
        Element root = document.root("r");
        root.attribute("a", 1);
        EXPECT_THAT(([&, &call = refused] { call(root); }), testing::ThrowsMessage<Error>(message));
        document.flush();
        EXPECT_EQ(target, text) << message;
        document.finish();
        EXPECT_EQ(target, text + "/>") << message;
    }
}

TEST(Document, RefusesCallsInTheWrongOrder)
{
    std::string target;
    Document document(target, COMPACT);
    const auto refusal = [](const auto& call) {
        try {
            call();
            return "not refused"s;
        } catch (const Error& error) {
            return std::string(error.what());
        }
    };
    EXPECT_EQ(refusal([&] { document.finish(); }), "/: there is no root element");
    EXPECT_EQ(refusal([&] { document.doctype("d", "p"); }),
              "/: a public identifier needs a system identifier");
    EXPECT_EQ(refusal([&] { document.doctype("d", "", "\"'"); }),
              "/: a system identifier cannot have both kinds of quotes");
    EXPECT_EQ(refusal([&] { document.doctype("d", "1Z~", "s"); }),
              "/: \"1Z~\" is not a public identifier");
    for (const char* identifier : {" A", "A ", "A  B"}) {
        EXPECT_EQ(
            refusal([&] { document.doctype("d", identifier, "s"); }),
            "/: a public identifier cannot begin or end with a blank, or have two in a row: no "
            "parser gives it back");
    }
    EXPECT_EQ(refusal([&] { document.doctype("d", "", "\r"); }),
              "/: a system identifier cannot have a carriage return: no parser gives it back");
    EXPECT_EQ(refusal([&] { document.doctype("1"); }),
              "/: \"1\" is not a name (an NCName of Namespaces in XML 1.0)");
    EXPECT_EQ(refusal([&] { document.doctype(Name(TERMS, "d")); }),
              "/: the name of a document type is in no namespace");
    document.doctype("d", "", "a\"b");
    EXPECT_EQ(refusal([&] { document.doctype("d"); }),
              "/: the document has a document type already");
    Element root = document.root("r");
    EXPECT_EQ(refusal([&] { document.root("s"); }), "s: the document has a root already");
    EXPECT_EQ(refusal([&] { document.doctype("d"); }), "/: a document type comes before the root");
    EXPECT_EQ(refusal([&] { document.comment("c"); }),
              "/: the root is open; use the comment() of an element");
    EXPECT_EQ(refusal([&] { document.instruction("p"); }),
              "/: the root is open; use the instruction() of an element");
    root.text("t");
    EXPECT_EQ(refusal([&] { root.attribute("a", 1); }), "r/@a: an attribute comes before content");
    EXPECT_EQ(refusal([&] { root.declare(TERMS); }), "r: a namespace is declared before content");
    root.end();
    EXPECT_EQ(refusal([&] { root.text("t"); }), "/: the element has ended");
    Element moved = std::move(root);
    // NOLINTNEXTLINE(bugprone-use-after-move, clang-analyzer-cplusplus.Move): what is tested
    EXPECT_EQ(refusal([&] { root.text("t"); }), "/: the element was moved from");
    document.finish();
    EXPECT_EQ(refusal([&] { document.comment("c"); }),
              "/: the document is finished; only reset() works");
    EXPECT_EQ(target, "<!DOCTYPE d SYSTEM 'a\"b'><r>t</r>");
    document.reset();
    document.doctype("again", "a'b", "a\"b");
    Element again = document.root("again");
    Element ended = again.child("a");
    Element open = again.child("b").declare(Namespace("urn:x", "x"));
    EXPECT_EQ(refusal([&] { ended.attribute("c", 1); }), "again/b: the element has ended");
    EXPECT_EQ(refusal([&] { again.attribute(Name(Namespace("urn:x", "y"), "c"), 1); }),
              "again/@y:c: an attribute comes before content");
    document.finish();
    EXPECT_EQ(target,
              "<!DOCTYPE again PUBLIC \"a'b\" 'a\"b'><again><a/><b xmlns:x=\"urn:x\"/></again>");
}

TEST(Document, ReplacesWhatXmlCannotHoldIfItIsTold)
{
    constexpr Options REPLACING{Layout::none, Unrepresentable::replace, false};
    const Case cases[] = {
        {[](Element& r) { r.text("a\x01\x1F\tb\xEF\xBF\xBF"); }, "<r>a\uFFFD\uFFFD\tb\uFFFD</r>"},
        {[](Element& r) { r.text(u"\xD800x\xDC00\xFFFE"); }, "<r>\uFFFDx\uFFFD\uFFFD</r>"},
        // One for each beginning of a character, one for any other byte.
        {[](Element& r) { r.text("\xF0\x9F\x98 \xE2\x82 \xC0\xAF \xED\xA0\x80 \xF4\x90 \x80"); },
         "<r>\uFFFD \uFFFD \uFFFD\uFFFD \uFFFD\uFFFD\uFFFD \uFFFD\uFFFD \uFFFD</r>"},
        {[](Element& r) { r.text("\xE0\x9F \xF0\x8F \xF5 \xF1\x80\x80\xC3 \xC3"); },
         "<r>\uFFFD\uFFFD \uFFFD\uFFFD \uFFFD \uFFFD\uFFFD \uFFFD</r>"},
    };
    for (const auto& [write, text] : cases) {
        EXPECT_EQ(inRoot(write, REPLACING), text);
    }
}

TEST(Document, NeverLooksCompleteUntilItIsFinished)
{
    std::string target;
    Document document(target, COMPACT);
    EXPECT_THROW(
        {
            Element root = document.root("r");
            Element child = root.child("c").add("a", "&");
            throw std::runtime_error("in mid-document");
        },
        std::runtime_error);
    document.flush();
    EXPECT_EQ(target, "<r><c><a>&amp;</a>");
    document.reset();
    document.root("r").add("c", "t");
    // More than a batch.
    const std::string comment(10'000, 'x');
    for (int count = 0; count < 3; ++count) {
        document.comment(comment);
    }
    EXPECT_EQ(target, "<r><c>t</c>");
    document.flush();
    document.comment("");
    EXPECT_EQ(target, "<r><c>t</c>");
    document.finish();
    const std::string written = "<!--" + comment + "-->";
    EXPECT_EQ(target, "<r><c>t</c></r>" + written + written + written + "<!---->");
}

TEST(Document, EndsTheElementsThatNoExceptionPasses)
{
    struct WritesWhenItIsDestroyed
    {
        Element& parent;

        ~WritesWhenItIsDestroyed()
        {
            Element late = parent.child("late");
            late.child("inner").text("t");
            late = std::move(parent); // as one that the exception passes
        }
    };
    const Case cases[] = {
        // Caught inside: the elements around end as always.
        {[](Element& r) {
             Element a = r.child("a");
             EXPECT_THROW(throw std::runtime_error(""), std::runtime_error);
             a.text("t");
         },
         "<r><a>t</a>"},
        {[](Element& r) {
             try {
                 Element a = r.child("a");
                 const WritesWhenItIsDestroyed late{a};
                 throw std::runtime_error("");
             } catch (const std::runtime_error&) {
             }
         },
         "<r><a><late><inner>t</inner></late>"},
        // The element that the chain has begun stays.
        {[](Element& r) {
             Element a = r.child("a");
             EXPECT_THROW(r.child("b").text("\x01").text("t"), Error);
             EXPECT_THROW(a.text("t"), Error);
         },
         "<r><a/><b"},
        // One in whose place another is put ends too, be that one inside, if it has ended, or of
        // another document.
        {[](Element& r) {
             Element a = r.child("a");
             Element b = a.child("b");
             b.end();
             a = std::move(b);
         },
         "<r><a><b/></a>"},
        {[](Element& r) {
             std::string target;
             Document other(target);
             Element c = r.child("c");
             c = other.root("d").child("e").child("f"); // deeper than `c`
         },
         "<r><c/>"},
    };
    for (const auto& [write, text] : cases) {
        std::string target;
        Document document(target, COMPACT);
        Element root = document.root("r");
        write(root);
        document.flush();
        EXPECT_EQ(target, text);
    }
}

TEST(Document, RefusesTargetsThatTakeNothing)
{
    EXPECT_THROW(Document{std::function<void(std::string_view)>()}, Error);
    for (const std::ios::iostate state : {std::ios::badbit, std::ios::failbit, std::ios::eofbit}) {
        std::ostringstream failed;
        failed.setstate(state);
        Document document(failed);
        EXPECT_THROW(document.flush(), Error) << state;
        failed.clear();
        document.reset();
        EXPECT_NO_THROW(document.flush());
    }
}

TEST(Document, TellsManyNamesApart)
{
    std::string expected;
    const std::string xml = inRoot([&](Element& r) {
        for (int count : {200, 100}) { // what the first tag has does not matter to the second
            const char first = count == 200 ? 'a' : 'b';
            Element element = r.child("e");
            expected += "<e";
            for (int number = 0; number < count; ++number) {
                // Fifty names are alike but for their namespaces, which wish the same prefix.
                const std::string uri = "urn:" + std::to_string(number % 50);
                const std::string local = first + std::to_string(number / 50);
                const Name name(Namespace(uri, "p"), local);
                element.attribute(name, 0);
                const std::string prefix =
                    number % 50 == 0 ? "p"s
                                     : "ns" + std::to_string(number % 50 + (count == 100 ? 49 : 0));
                if (number < 50) {
                    expected += " xmlns:" + prefix + "=\"" + uri + '"';
                }
                expected += ' ' + prefix + ':' + local + "=\"0\"";
                EXPECT_THAT([&] { element.attribute(name, 1); },
                            testing::ThrowsMessage<Error>(testing::StartsWith("r/e/@" + prefix)));
            }
            EXPECT_THROW(element.attribute(Name(Namespace("urn:0", "p"), first + "0"s), 1), Error);
            expected += "/>";
        }
    });
    EXPECT_EQ(xml, "<r>" + expected + "</r>");
    // These have one hash, and so do `a` and one or two of the names below.
    EXPECT_EQ(
        inRoot([](Element& r) { r.declare(Namespace("a", "a")).declare(Namespace("ba", "ba")); }),
        "<r xmlns:a=\"a\" xmlns:ba=\"ba\"/>");
    expected = "<r a=\"\"";
    const std::string alike = inRoot([&](Element& r) {
        r.attribute("a", "");
        for (const char* end : {"a", "aa"}) {
            for (char letter = 'b'; letter <= 'z'; ++letter) {
                r.attribute(letter + std::string(end), "");
                expected += std::string(" ") + letter + end + "=\"\"";
            }
        }
    });
    EXPECT_EQ(alike, expected + "/>");
}

TEST(Document, CopiesTextOfEveryLengthAndFindsMarkupAtEveryPlace)
{
    std::string text;
    for (std::size_t size = 0; size < 140; ++size) {
        std::string expected = "<r xmlns:p=\"u\" ab=\"" + text + "\"><p:abc>" + text + "</p:abc>";
        const std::string xml = inRoot([&](Element& r) {
            const Namespace space("u", "p");
            r.declare(space).attribute("ab", text).add(Name(space, "abc"), text);
            for (std::size_t place = 0; place < size; ++place) {
                std::string marked = text;
                marked[place] = '&';
                r.add("a", marked);
                expected += "<a>" + marked.replace(place, 1, "&amp;") + "</a>";
            }
        });
        ASSERT_EQ(xml, expected + "</r>");
        text += static_cast<char>('A' + size % 50);
    }
    const std::string name(20'000, 'n');
    EXPECT_EQ(inRoot([&](Element& r) { r.add(name, "x"); }),
              "<r><" + name + ">x</" + name + "></r>");
}

TEST(Document, EscapesWhereverAPortionOfAValueEnds)
{
    for (const std::string& character : {"\u00E9"s, "\u4E2D"s, "\U0001F600"s}) {
        for (std::size_t size = 2040; size < 2060; ++size) {
            std::string text = '<' + std::string(size % 7, 'x');
            std::string markup = "&lt;" + std::string(size % 7, 'x');
            while (text.size() < size) {
                text += character;
                markup += character;
            }
            EXPECT_EQ(inRoot([&](Element& r) { r.text(text + "<&" + text); }),
                      "<r>" + markup + "&lt;&amp;" + markup + "</r>");
        }
    }
}

TEST(Document, RefusesCallsByItsTarget)
{
    std::function<void()> call;
    std::string message;
    Document document(
        [&](std::string_view) {
            try {
                call();
            } catch (const Error& error) {
                message = error.what();
            }
        },
        COMPACT);
    Element root = document.root("r");
    for (const std::function<void()>& each : std::initializer_list<std::function<void()>>{
             [&] { root.text("x"); }, [&] { document.flush(); }, [&] { document.reset(); },
             [&] { document.finish(); }, [&] { document.doctype("d"); },
             [&] { document.root("r"); }}) {
        call = each;
        message.clear();
        root.child("c");
        document.flush();
        EXPECT_TRUE(message.ends_with("the target cannot call the document that it receives"))
            << message;
    }
    call = [&] { const Element gone = std::move(root); };
    root.child("c");
    document.flush();
    call = [] {};
    document.finish();
}

TEST(Document, KeepsWhatADestructorMeetsForFinish)
{
    bool isFull = false;
    Document document(
        [&](std::string_view) {
            if (isFull) {
                throw std::runtime_error("no room");
            }
        },
        COMPACT);
    const auto writeUntilFull = [&] {
        Element root = document.root("r");
        // With the start tag of the next child a whole batch, and with its end more.
        root.child("c").text(std::string(8182, 'x')).text(std::string(8189, 'x'));
        isFull = true;
        const Element other = root.child("d");
    };
    writeUntilFull();
    isFull = false;
    EXPECT_THAT([&] { document.finish(); }, testing::ThrowsMessage<std::runtime_error>("no room"));
    std::ostringstream stream;
    Document toStream(stream, COMPACT);
    {
        Element root = toStream.root("r");
        root.child("c").text(std::string(8182, 'x')).text(std::string(8189, 'x'));
        const Element other = root.child("d");
        stream.setstate(std::ios::badbit);
    }
    EXPECT_THAT([&] { toStream.finish(); },
                testing::ThrowsMessage<Error>("r: the stream has failed"));
    // Of no concern to the next document.
    document.reset();
    writeUntilFull();
    isFull = false;
    document.reset();
    document.root("r");
    EXPECT_NO_THROW(document.finish());
}

TEST(Document, AcceptsExactlyTheNamesOfXml)
{
    const auto isName = [](std::string_view text) {
        try {
            inRoot([&](Element& r) { r.child(text); });
            return true;
        } catch (const Error&) {
            return false;
        }
    };
    for (char16_t unit = 1; unit != 0xFFFF; ++unit) {
        const std::string character = referenceUtf8({&unit, 1});
        for (const std::string& name : {character, 'a' + character}) {
            const bool isKnown = outlineOfXml('<' + name + "/>") == "<{}" + name + "></>";
            ASSERT_EQ(isName(name), isKnown && unit != u':') << name;
        }
    }
    for (const char* name : {"\U00010000", "\U000EFFFF"}) {
        EXPECT_TRUE(isName(name)) << name;
    }
    for (const char* name :
         {"", "a b", "\U000F0000", "a\xC3", "\xC3(", "\xE4\xB8", "\x80", "\xC1\x81", "\xE0\x81\x81",
          "\xF0\x80\x81\x81", "\xF8\x90\x80\x80", "\xBF\xBF", "\xED\xA0\x80"}) {
        EXPECT_FALSE(isName(name)) << name;
    }
    const auto isNamespace = [](const Namespace& space) {
        try {
            inRoot([&](Element& r) { r.child(Name(space, "c")); });
            return true;
        } catch (const Error&) {
            return false;
        }
    };
    for (char character = 1; character != 0x7F; ++character) {
        const bool isAllowed =
            character > ' ' && "<>\"{}|\\^`"s.find(character) == std::string::npos;
        EXPECT_EQ(isNamespace(Namespace("urn:"s + character)), isAllowed) << character;
        // The characters of a public identifier that a parser gives back.
        const std::string id = {'a', character, 'a'};
        std::string target;
        Document document(target, COMPACT);
        const std::string xml = "<!DOCTYPE d PUBLIC \"" + id + "\" \"s\"><d/>";
        try {
            document.doctype("d", id, "s");
        } catch (const Error&) {
        }
        document.root("d").end();
        document.finish();
        EXPECT_EQ(target == xml, outlineByExpat(xml) == "<!DOCTYPE d " + id + " s><{}d></>") << id;
    }
    for (const Namespace& space :
         {Namespace(""), Namespace("a\x7F"), Namespace("a", "1"), Namespace("a", "xml"),
          Namespace(XML.uri()), Namespace(XML.uri(), "x"), Namespace("a", "xmlns"),
          Namespace("http://www.w3.org/2000/xmlns/", "x")}) {
        EXPECT_FALSE(isNamespace(space)) << space.uri() << ' ' << space.prefix();
    }
}

TEST(Document, RefusesOrGivesBackWhateverIsCalled)
{
    forRandomInputs(IS_SANITIZED ? 500 : 2000, 4000,
                    [](Input input) { EXPECT_EQ(faultOfDocumentCalls(input), ""); });
}

} // namespace

} // namespace tarn::tests
