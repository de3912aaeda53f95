// Calls and the text that they make, over each target.

#include "support/Call.hpp"
#include "support/difference.hpp"
#include "support/RecordingSink.hpp"

#include <tarn/utils/num_to_string.hpp>
#include <tarn/xml/XmlWriter.hpp>

#include <gtest/gtest.h>

#include <iomanip>
#include <ios>
#include <numeric>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <vector>

namespace tarn::tests {

namespace {

using utils::XmlWriter;

struct Case
{
    Calls calls;
    std::u16string text;
};

std::u16string textOf(const Calls& calls)
{
    std::u16string text;
    XmlWriter writer(text);
    for (const Call& call : calls) {
        call.applyTo(&writer);
    }
    return text;
}

void check(std::initializer_list<Case> cases)
{
    for (const auto& [calls, text] : cases) {
        EXPECT_EQ(difference(textOf(calls), text), "") << calls;
    }
}

TEST(XmlWriter, LaysElementsOutOnIndentedLines)
{
    check({
        {{startDocument(u"\"<&"), startElement(u"a"), startElement(u"b"), value(u"x"), endElement(),
          startElement(u"c"), endElement(), endElement(), endDocument()},
         u"<?xml version=\"\"<&\"?>\n<a>\n  <b>x</b>\n  <c/>\n</a>"},
        {{startElement(u"a"), emptyElement(u"b"), value(u"t"), endElement()},
         u"\n<a>\n  <b/>t\n</a>"},
        {{startElement(u"a"), value(u"t"), emptyElement(u"b"), endElement()},
         u"\n<a>t\n  <b/>\n</a>"},
        {{startElement(u"a"), value(u""), endElement()}, u"\n<a></a>"},
        {{startElement(u"a"), startAttribute(u"k"), value(u"v"), startElement(u"b"), endElement()},
         u"\n<a k=\"v\">\n  <b/>"},
        {{startElement(u"a"), startElement(u"b"), startElement(u"c"), startAttribute(u"k"),
          endDocument()},
         u"\n<a>\n  <b>\n    <c k=\"\"/>\n  </b>\n</a>"},
    });
    // Deeper than 8 bits count.
    Calls calls;
    std::u16string text;
    for (std::size_t depth = 0; depth < 300; ++depth) {
        calls.insert(calls.end(), {startElement(u"a"), emptyElement(u"b"), element(u"c", u"")});
        const std::u16string line = std::u16string(u"\n").append(2 * depth, u' ');
        text += line + u"<a>" + line + u"  <b/>" + line + u"  <c></c>";
    }
    EXPECT_EQ(difference(textOf(calls), text), "");
}

TEST(XmlWriter, DeclaresTheVersionAndTheEncodingOfTheTarget)
{
    std::string bytes;
    std::ostringstream stream;
    XmlWriter bytesWriter(bytes);
    XmlWriter streamWriter(stream);
    for (XmlWriter* writer : {&bytesWriter, &streamWriter}) {
        writer->writeStartDocument();
        writer->writeEndDocument();
    }
    EXPECT_EQ(bytes, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    EXPECT_EQ(stream.view(), bytes);
}

TEST(XmlWriter, WritesRawTextWhereItStands)
{
    check({
        {{startElement(u"a"), rawXml(u"<!-- -->")}, u"\n<a<!-- -->"},
        {{startElement(u"a"), startAttribute(u"k"), rawXml(u"&#9;"), value(u"v"), endElement()},
         u"\n<a k=\"&#9;v\"/>"},
    });
}

TEST(XmlWriter, IgnoresWhatDoesNotFitTheState)
{
    check({
        {{startElementClose(), startAttribute(u"k"), endAttribute(),
          namespaceDeclaration(u"urn:a", u"a"), endElement(), endDocument()},
         u""},
        {{startElement(u"a"), startElementClose(), startElementClose(), startAttribute(u"k"),
          endAttribute(), namespaceDeclaration(u"urn:a", u"a"), emptyElement(u"b", u"urn:a")},
         u"\n<a>\n  <ns1:b xmlns:ns1=\"urn:a\"/>"},
        {{startElement(u"a"), value(u"x"), attribute(u"k", u"urn:a", u"p", u"\""), endElement()},
         u"\n<a>x&quot;</a>"},
    });
}

TEST(XmlWriter, WritesAttributesWholeAndInPieces)
{
    check({
        {{startElement(u"e"), attribute(u"t", u"a\"b&c\t\n\r")},
         u"\n<e t=\"a&quot;b&amp;c\t\n\r\""},
        {{startElement(u"e"), startAttribute(u"k"), value(u"x"), value(u""), value(u"<"),
          startAttribute(u"l"), endAttribute(), startElementClose()},
         u"\n<e k=\"x&lt;\" l=\"\">"},
        {{startElement(u"e"), attribute(u"a", u"urn:x", u"1"), attribute(u"b", u"urn:x", u"2")},
         u"\n<e ns1:a=\"1\" xmlns:ns1=\"urn:x\" ns1:b=\"2\""},
        {{startElement(u"e"), attribute(u"lang", u"http://www.w3.org/XML/1998/namespace", u"en")},
         u"\n<e xml:lang=\"en\""},
    });
}

TEST(XmlWriter, ChoosesAPrefixAtTheFirstUseOfANamespace)
{
    check({
        {{startElement(u"doc"), startElement(u"a", u"urn:a"), startElement(u"b", u"urn:a", u"x"),
          endElement(), endElement(), startElement(u"c", u"urn:a"), endElement(), endElement()},
         u"\n<doc>\n  <ns1:a xmlns:ns1=\"urn:a\">\n    <ns1:b/>\n  </ns1:a>"
         u"\n  <ns2:c xmlns:ns2=\"urn:a\"/>\n</doc>"},
        {{startElement(u"a", u"urn:a", u"p"), attribute(u"k", u"urn:b", u"p", u"v")},
         u"\n<p:a xmlns:p=\"urn:a\" ns1:k=\"v\" xmlns:ns1=\"urn:b\""},
        {{startElement(u"a", u"urn:a"), startElement(u"b", u"urn:b", u"ns2"),
          startElement(u"c", u"urn:c", u"ns3"), startElement(u"d", u"urn:d")},
         u"\n<ns1:a xmlns:ns1=\"urn:a\">\n  <ns2:b xmlns:ns2=\"urn:b\">"
         u"\n    <ns3:c xmlns:ns3=\"urn:c\">\n      <ns4:d xmlns:ns4=\"urn:d\""},
        {{startElement(u"a", u"urn:a", u"xml"), attribute(u"k", u"urn:b", u"xmlns", u"")},
         u"\n<xml:a xmlns:xml=\"urn:a\" xmlns:k=\"\" xmlns:xmlns=\"urn:b\""},
        {{startElement(u"", u"urn:a"), startElement(u"x:y", u"urn:a"), startElement(u"", u"")},
         u"\n<ns1 xmlns:ns1=\"urn:a\">\n  <ns1:x:y>\n    <"},
        {{startElement(u"a", u"urn:\"&", u"p")}, u"\n<p:a xmlns:p=\"urn:&quot;&amp;\""},
    });
}

TEST(XmlWriter, DeclaresNamespacesOnRequest)
{
    check({
        {{startElement(u"doc"), namespaceDeclaration(u"urn:a", u"a"),
          namespaceDeclaration(u"urn:a", u"b"), startElement(u"c", u"urn:a"), endElement(),
          emptyElement(u"d", u"urn:a"), endElement(), emptyElement(u"e", u"urn:a")},
         u"\n<doc xmlns:a=\"urn:a\">\n  <a:c/>\n  <a:d/>\n</doc>\n<ns1:e xmlns:ns1=\"urn:a\"/>"},
        {{startElement(u"e"), startAttribute(u"k"), namespaceDeclaration(u"urn:a", u"")},
         u"\n<e k=\"\" xmlns:ns1=\"urn:a\""},
        {{startElement(u"e"), namespaceDeclaration(u"", u"p")}, u"\n<e xmlns:p=\"\""},
        {{startElement(u"e"), defaultNamespace(u"urn:a"), startElement(u"c", u"urn:a")},
         u"\n<e xmlns=\"urn:a\">\n  <ns1:c xmlns:ns1=\"urn:a\""},
    });
    // More than 16 bits count; more than 8 bits, of those that are queued.
    const std::u16string longText(0x10040, u'e');
    Calls calls = {startElement(u"r", u"urn:r", u"r"), startElement(longText)};
    std::u16string text = u"\n<r:r xmlns:r=\"urn:r\">\n  <" + longText;
    for (unsigned long number = 1; number <= 70'000; ++number) {
        const std::u16string name = utils::num_to_string(number);
        const bool isQueued = number <= 300;
        calls.push_back(isQueued ? registerDefault(name) : namespaceDeclaration(name, u""));
        text +=
            isQueued ? u" xmlns=\"" : u" xmlns:ns" + utils::num_to_string(number - 300) + u"=\"";
        text += name + u"\"";
    }
    calls.insert(calls.end(),
                 {endElement(), endElement(), element(u"f", u"1", u"p", longText + u"&"),
                  emptyElement(u"r", u"urn:r", u"q")});
    text +=
        u"/>\n</r:r>\n<p:f xmlns:p=\"1\">" + longText + u"&amp;</p:f>\n<q:r xmlns:q=\"urn:r\"/>";
    EXPECT_EQ(difference(textOf(calls), text), "");
}

TEST(XmlWriter, DeclaresRegisteredNamespacesOnTheNextStartTag)
{
    const std::u16string xmlns = u"http://www.w3.org/2000/xmlns/";
    check({
        {{registerDefault(u"urn:a"), startElement(u"root", u"urn:a"), emptyElement(u"c", u"urn:a"),
          attribute(u"ignored", u"")},
         u"\n<root xmlns=\"urn:a\">\n  <c/>"},
        {{startElement(u"e"), registerDefault(u"urn:d"), attribute(u"a", u"urn:d", u"v")},
         u"\n<e a=\"v\" xmlns=\"urn:d\""},
        // Registered again while bound: declared again with the prefix that it has.
        {{startElement(u"a", u"urn:a", u"p"), registerDefault(u"urn:a"), startElement(u"b"),
          endElement(), startElement(u"c", u"urn:a", u"q"), endElement(), endElement()},
         u"\n<p:a xmlns:p=\"urn:a\">\n  <b xmlns:p=\"urn:a\"/>"
         u"\n  <q:c xmlns:q=\"urn:a\"/>\n</p:a>"},
        {{registerDefault(u"urn:a"), registerDefault(u"urn:a"), startElement(u"a"), endElement(),
          startElement(u"b", u"urn:a", u"p")},
         u"\n<a xmlns=\"urn:a\" xmlns=\"urn:a\"/>\n<p:b xmlns:p=\"urn:a\""},
        // The binding has gone by the time of the drain.
        {{startElement(u"a", u"urn:a", u"p"), startElementClose(), registerDefault(u"urn:a"),
          endElement(), startElement(u"b")},
         u"\n<p:a xmlns:p=\"urn:a\"></p:a>\n<b"},
        // The binding of the reserved namespace itself ends with the element that declared it.
        {{registerDefault(xmlns), emptyElement(u"a"), startElement(u"b", u"urn:b", u"p")},
         u"\n<a xmlns:xmlns=\"http://www.w3.org/2000/xmlns/\"/>\n<p:b xmlns:p=\"urn:b\""
         u" xmlns:xmlns=\"http://www.w3.org/2000/xmlns/\""},
    });
}

TEST(XmlWriter, ReplacesSpecialCodeUnitsByTheRulesOfTheDeclaredVersion)
{
    std::u16string text(0x100, u'\0');
    std::iota(text.begin(), text.end(), u'\0');
    const std::u16string others = text.substr(u'?');
    const std::u16string_view markup = u" !&quot;#$%&amp;&apos;()*+,-./0123456789:;&lt;=&gt;";
    const std::u16string_view referenced =
        u"&#1;&#2;&#3;&#4;&#5;&#6;&#7;&#8;\t\n&#11;&#12;\r&#14;&#15;&#16;&#17;&#18;&#19;&#20;&#21;&"
        u"#22;&#23;&#24;&#25;&#26;&#27;&#28;&#29;&#30;&#31;";
    for (const auto& [version, controls] : {std::pair(std::u16string(), referenced),
                                            {u"1.0", u"\t\n \r"},
                                            {u"1.1", referenced},
                                            {{u'1', u'.', u'0', u'\0'}, referenced}}) {
        Calls calls = {value(text)};
        std::u16string expected = std::u16string(1, u'\0').append(controls).append(markup) + others;
        if (!version.empty()) {
            calls.insert(calls.begin(), startDocument(version));
            expected.insert(0, textOf({calls.front()}));
        }
        EXPECT_EQ(difference(textOf(calls), expected), "") << calls;
    }
}

TEST(XmlWriter, QualifiesNamesAheadOfTheTagThatDeclaresThem)
{
    Recording recording;
    RecordedWriter writer(recording);
    const std::u16string cases[][4] = {
        {u"a", u"", u"p", u"a"},
        {u"a", u"urn:a", u"p", u"p:a"},
        {u"b", u"urn:a", u"q", u"p:b"},
        {u"a", u"urn:b", u"p", u"ns1:a"},
        {u"a", u"urn:c", u"", u"ns2:a"},
        {u"", u"urn:a", u"", u"p"},
        {u"lang", u"http://www.w3.org/XML/1998/namespace", u"q", u"xml:lang"}};
    for (const auto& [localName, namespaceUri, prefix, name] : cases) {
        EXPECT_EQ(writer.qualifyName(localName, namespaceUri, prefix), name);
    }
    EXPECT_TRUE(recording.pieces.empty());
    writer.writeStartElement(u"e", u"urn:b", u"");
    EXPECT_EQ(difference(separated(recording.pieces),
                         u"\n||<|ns1:e| |xmlns:p|=\"|urn:a|\"| |xmlns:ns1|=\"|urn:b|\"| "
                         u"|xmlns:ns2|=\"|urn:c|\"|"),
              "");
}

TEST(XmlWriter, EmptiesAStringAtOnceAndInsertsIntoAStream)
{
    std::u16string units = u"old";
    std::string bytes = "old";
    std::ostringstream stream;
    stream << "old " << std::setw(5) << std::setfill('*');
    XmlWriter unitsWriter(units);
    XmlWriter bytesWriter(bytes);
    XmlWriter streamWriter(stream);
    EXPECT_TRUE(units.empty());
    EXPECT_TRUE(bytes.empty());
    streamWriter.writeRawXml(u"new");
    streamWriter.writeEndDocument();
    EXPECT_EQ(stream.view(), "old **new");
    // Without text to convert too.
    stream << std::setw(3);
    streamWriter.writeEndDocument();
    EXPECT_EQ(stream.width(), 0);
    EXPECT_EQ(stream.view(), "old **new***");
    // What a stream that has failed does not take is gone.
    stream.setstate(std::ios::badbit);
    streamWriter.writeRawXml(u"lost");
    streamWriter.writeEndDocument();
    stream.clear();
    streamWriter.writeRawXml(u"taken");
    streamWriter.writeEndDocument();
    EXPECT_EQ(stream.view(), "old **new***taken");
}

/// Takes bytes, and fails when told to.
class Buffer : public std::streambuf
{
public:
    std::string taken;
    std::string flushed; ///< What was taken before the last flush.
    SuccessesLeft successesLeft;

protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override
    {
        successesLeft.take();
        taken.append(bytes, static_cast<std::size_t>(count));
        return count;
    }

    int sync() override
    {
        flushed = taken;
        return 0;
    }
};

/// Makes @p form on a batch that has so much room left, whose conversion may fail.
void checkAtRoom(const Call& form, std::size_t room, bool isToFail)
{
    Buffer buffer;
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit);
    XmlWriter writer(stream);
    ReferenceWriter reference(u"UTF-8");
    if (isToFail) {
        buffer.successesLeft = reference.conversionsLeft = 0;
    }
    // The start tag of `c` remains open, below a declaration.
    const std::u16string start = u"\n<p:r xmlns:p=\"urn:a\">";
    const std::u16string end = u"\n  <p:c";
    const std::u16string filling(8192 - start.size() - end.size() - room, u'.');
    // After a failure even an empty piece converts what waits.
    for (const Call& call :
         {startElement(u"r", u"urn:a", u"p"), rawXml(filling), startElement(u"c", u"urn:a"), form,
          rawXml(u""), endDocument(), endDocument()}) {
        const bool hasFailed = call.failsOn(&writer);
        stream.clear();
        ASSERT_EQ(hasFailed, call.failsOn(&reference)) << form << " with room for " << room;
        ASSERT_EQ(difference(buffer.taken, reference.bytes), "")
            << form << " with room for " << room << (isToFail ? ", failing" : "");
        ASSERT_TRUE(buffer.flushed.empty() || call.operation == &endDocument) << form;
    }
    ASSERT_EQ(difference(buffer.flushed, buffer.taken), "");
}

TEST(XmlWriter, WritesTheSamePiecesAtEveryRoomThatABatchLeaves)
{
    std::u16string specials;
    std::u16string mixed;
    for (int i = 0; i < 8; ++i) {
        specials += u"\"'\"'\"'\"'<>&\x02\x1F\x0B";
        mixed += u"ab&cdefgh\"\u4E2D\t \xD83D\xDE00\n";
    }
    const std::u16string plain(128, u'p');
    const Call forms[] = {
        element(u"e", plain),
        element(u"prefixed-name", u"urn:a", plain.substr(0, 20)),
        element(u"e", u"urn:a", specials),
        element(u"e", mixed),
        element(u"e", specials + mixed),
        // As long as a value can be that passes in one piece, and as long as its text can be.
        element(u"e", std::u16string(128, u'"')),
        element(u"undeclared", u"urn:b", u"b", mixed),
        attribute(u"a", u"urn:a", specials),
        attribute(u"prefixed-name", u"urn:a", plain + u"&"),
        emptyElement(u"prefixed-name", u"urn:a"),
        startElement(u"prefixed-name", u"urn:a"),
        value(specials + specials),
        value(plain + plain + mixed),
        endElement(),
    };
    for (const Call& form : forms) {
        // Every code unit of a short value counts as the longest replacement.
        std::size_t mostRoom = 200;
        for (const std::u16string& argument : form.arguments) {
            mostRoom += 6 * argument.size();
        }
        for (std::size_t room = 0; room <= mostRoom; ++room) {
            checkAtRoom(form, room, false);
            if (room % 4 == 0) {
                checkAtRoom(form, room, true);
            }
        }
    }
}

TEST(XmlWriter, KeepsASurrogatePairTogetherAndHoldsNothingElseBack)
{
    const std::string full(8192, 'a');
    std::string bytes;
    XmlWriter writer(bytes);
    writer.writeRawXml(std::u16string(8192, u'a') + u"\xD83D");
    EXPECT_EQ(difference(bytes, full), "");
    writer.writeRawXml(u"\xDE00");
    writer.writeEndDocument();
    EXPECT_EQ(difference(bytes, full + "\U0001F600"), "");
    // At the end nothing follows.
    writer.writeRawXml(u"\xD83D");
    writer.writeEndDocument();
    EXPECT_EQ(difference(bytes, full + "\U0001F600\uFFFD"), "");
    // If every piece ends in a high surrogate, what waits is never more than one batch.
    bytes.clear();
    std::size_t written = 0;
    for (int piece = 0; piece < 10'000; ++piece) {
        writer.writeValue(u"x\xD83D");
        written += 2;
        // The letter is one byte; the surrogate, to which no other half has come, is three.
        ASSERT_GE(bytes.size() + 2 * 8192, 2 * written) << piece;
    }
}

TEST(XmlWriter, LosesWhatIsNotConvertedWhenDestroyed)
{
    std::string bytes;
    {
        XmlWriter writer(bytes);
        writer.writeRawXml(std::u16string(70'000, u'a'));
        writer.writeRawXml(std::u16string(8192, u'b'));
    }
    EXPECT_EQ(difference(bytes, std::string(70'000, 'a')), "");
}

TEST(XmlWriter, TakesTheTargetItselfAsAnArgument)
{
    const std::u16string before = u"\n<e a=\"1<\"";
    Calls forms;
    for (const Operation* operation : Operation::all()) {
        const std::size_t most = operation->kinds.size();
        for (std::size_t count = operation->hasOverloads() ? 2 : most; count <= most; ++count) {
            forms.push_back({operation, std::vector<std::u16string>(count)});
        }
    }
    for (const Call& form : forms) {
        // A bit for each argument: whether it is the target.
        for (std::size_t chosen = 1; chosen < 1u << form.arguments.size(); ++chosen) {
            Call call = form;
            for (std::size_t i = 0; i < call.arguments.size(); ++i) {
                call.arguments[i] = (chosen >> i & 1) != 0 ? before : u"x";
            }
            const std::u16string expected =
                textOf({startElement(u"e"), startAttribute(u"a"), value(u"1"), rawXml(u"<"),
                        endAttribute(), call, endDocument()});
            for (std::size_t room = 0; room <= 100; ++room) {
                std::u16string target;
                XmlWriter writer(target);
                writer.writeStartElement(u"e", u"", u"");
                writer.writeStartAttribute(u"a", u"", u"");
                writer.writeValue(u"1");
                writer.writeRawXml(u"<");
                writer.writeEndAttribute();
                ASSERT_EQ(target, before);
                std::u16string withRoom(before.size() + room, u' ');
                withRoom = before;
                target = std::move(withRoom);
                ASSERT_EQ(target.capacity(), before.size() + room);
                applyWith(call, &writer, target, chosen);
                writer.writeEndDocument();
                ASSERT_EQ(difference(target, expected), "") << call << ' ' << chosen << ' ' << room;
            }
        }
    }
}

#ifndef NDEBUG
TEST(XmlWriterDeathTest, SaysSoWhenAWriterIsUsedThatWasMovedFrom)
{
    std::u16string text;
    XmlWriter writer(text);
    XmlWriter moved(std::move(writer));
    EXPECT_DEATH(writer.writeEndDocument(), "moved from"); // NOLINT(bugprone-use-after-move)
    std::u16string other;
    XmlWriter assigned(other);
    assigned = std::move(moved);
    EXPECT_DEATH(moved.writeEndDocument(), "moved from"); // NOLINT(bugprone-use-after-move)
}
#endif

TEST(XmlWriter, MovesWithItsDocument)
{
    std::u16string first;
    std::u16string second;
    XmlWriter writer(first);
    writer.writeStartElement(u"a", u"", u"");
    XmlWriter moved(std::move(writer));
    XmlWriter other(second);
    other.writeStartElement(u"b", u"", u"");
    // The document with `b` is left as by the destructor: nothing holds or ends it any more.
    other = std::move(moved);
    XmlWriter& same = other;
    other = std::move(same);
    other.writeStartElement(u"c", u"", u"");
    EXPECT_EQ(first, u"\n<a>\n  <c");
    // One that was moved from can be assigned to, and destroyed.
    writer = std::move(other);
    writer.writeEndDocument();
    EXPECT_EQ(first, u"\n<a>\n  <c/>\n</a>");
    EXPECT_EQ(second, u"\n<b");
    writer = XmlWriter(second);
    writer.writeEmptyElement(u"d", u"", u"");
    EXPECT_EQ(second, u"\n<d/>");
}

} // namespace

} // namespace tarn::tests
