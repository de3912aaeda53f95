// Each operation of the writer fails in each state: at each piece of text, at each allocation. Text
// and state are then those of a reference writer that failed at the same place.

#include "support/Call.hpp"
#include "support/difference.hpp"
#include "support/FailingAllocation.hpp"
#include "support/RecordingSink.hpp"
#include "support/reference_utf8.hpp"
#include "support/ReferenceWriter.hpp"

#include <tarn/xml/XmlWriter.hpp>

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarn::tests {

namespace {

// Too long for a string without an allocation.
const std::u16string URI = u"http://example.org/";
const std::u16string PREFIX = u"the-prefix";
const std::u16string XMLNS_URI = u"http://www.w3.org/2000/xmlns/";

Calls operator+(Calls calls, const Calls& more)
{
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

/// What leads to each state that a call can find.
std::vector<Calls> states()
{
    const Calls start = {startDocument(u"1.0"), startElement(u"a", URI, PREFIX)};
    const Calls twice = {registerDefault(URI), registerDefault(URI)};
    Calls elements;
    Calls queued;
    for (char16_t letter = u'A'; letter < u'O'; ++letter) {
        elements.push_back(startElement(u"e", URI + letter));
        queued.push_back(registerDefault(URI + letter));
    }
    elements.erase(elements.begin() + 8, elements.end());
    const Calls spare = {emptyElement(u"a-long-name", u"urn:&<", u"q"), endElement()};
    return {
        {},
        twice,
        start,
        start + twice,
        start + Calls{startAttribute(u"k", u"urn:k", u"k"), value(u"v")},
        start + Calls{startAttribute(u"k")} + twice,
        start + Calls{value(u"t")},
        start + Calls{value(u"t")} + twice,
        start + Calls{element(u"b", u"urn:b", u"t")},
        // The next element declares what an element before it has ended.
        start + twice + Calls{startElement(u"b")} + twice + Calls{endElement()},
        // Spare objects; names that were bound have gone.
        start + spare,
        start + spare + Calls{startElement(u"d", u"urn:d", u"d")},
        {registerDefault(XMLNS_URI), startElement(u"a")},
        {registerDefault(XMLNS_URI), emptyElement(u"a"), startElement(u"b"), registerDefault(URI)},
        // The next element, binding or queued name needs memory.
        elements,
        queued,
        start + queued,
    };
}

/// Every operation, with plain arguments, with known names and with new ones.
Calls operations()
{
    const std::u16string arguments[][4] = {{u"e", u"", u"", u"1.0"},
                                           {u"a-long-name", URI, PREFIX, u"t<\x02u"},
                                           {u"n", URI + u"<new>", PREFIX, u"\x0Bv>"}};
    Calls calls;
    for (const Operation* operation : Operation::all()) {
        for (const auto& [name, uri, prefix, text] : arguments) {
            Call call{operation};
            for (const char kind : operation->kinds) {
                call.arguments.push_back(kind == 'N'   ? name
                                         : kind == 'U' ? uri
                                         : kind == 'P' ? prefix
                                                       : text);
            }
            calls.push_back(call);
        }
    }
    return calls;
}

/// Calls that show the state, in one way and in another.
std::array<Calls, 2> sequels()
{
    const std::u16string newUri = URI + u"<new>";
    const Calls rest = {endElement(), startElement(u"s", URI, u"s"),
                        attribute(u"b", newUri, u"n", u"w"), emptyElement(u"z", u"urn:z"),
                        endElement(), emptyElement(u"y", newUri, PREFIX),
                        // Ends with what is as in the beginning.
                        endDocument(), element(u"x", u"urn:x", PREFIX, u"<\x02"), endDocument()};
    return {Calls{value(u"\x01")} + rest, Calls{attribute(u"c", newUri, u"w")} + rest};
}

struct Case
{
    const Calls& before;
    const Call& call;
    const Calls& after;
    bool isSecond; ///< Whether it has the second sequel.
};

std::ostream& operator<<(std::ostream& stream, const Case& tested)
{
    return stream << "after\n"
                  << tested.before << "failed\n  " << tested.call << "\nthen\n"
                  << tested.after;
}

void applyAll(const Calls& calls, AnyWriter writer)
{
    for (const Call& call : calls) {
        call.applyTo(writer);
    }
}

/// Calls @p check with each case, and with a reference writer in its state.
void forEachCase(const std::function<void(const Case&, const ReferenceWriter&)>& check)
{
    const auto [first, second] = sequels();
    const Calls operations = tests::operations();
    for (const Calls& before : states()) {
        ReferenceWriter reached;
        applyAll(before, &reached);
        for (const Call& call : operations) {
            check({before, call, first, false}, reached);
            check({before, call, second, true}, reached);
            if (testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

TEST(WriterFailures, AtAnyPieceLeaveTheTextAndTheStateSoFar)
{
    forEachCase([](const Case& tested, const ReferenceWriter& reached) {
        // A sink that converts has a piece already when it fails.
        const bool isTaken = tested.isSecond;
        bool hasFailed = true;
        for (std::size_t successes = 0; hasFailed; ++successes) {
            Recording recording;
            recording.takesWhatFails = isTaken;
            RecordedWriter writer(recording);
            ReferenceWriter reference = reached;
            reference.takesWhatFails = isTaken;
            applyAll(tested.before, &writer);
            recording.successesLeft = reference.piecesLeft = successes;
            hasFailed = tested.call.failsOn(&reference);
            ASSERT_EQ(tested.call.failsOn(&writer), hasFailed) << tested;
            ASSERT_EQ(recording.pieces, reference.pieces) << tested;
            recording.successesLeft = reference.piecesLeft = {};
            applyAll(tested.after, &writer);
            applyAll(tested.after, &reference);
            ASSERT_EQ(difference(separated(recording.pieces), separated(reference.pieces)), "")
                << "at piece " << successes << ", " << tested;
            ASSERT_EQ(recording.flushes, reference.flushes) << tested;
        }
    });
}

std::u16string textOf(const ReferenceWriter& reference)
{
    return std::accumulate(reference.pieces.begin(), reference.pieces.end(), std::u16string());
}

TEST(WriterFailures, OfMemoryLeaveTheTextAndTheStateOfAStep)
{
    forEachCase([](const Case& tested, const ReferenceWriter& reached) {
        // What the target may hold after the call and in the end: one for each step that fails.
        std::vector<std::pair<std::u16string, std::u16string>> allowed;
        bool hasFailed = true;
        for (std::size_t steps = 0; hasFailed; ++steps) {
            ReferenceWriter reference = reached;
            reference.stepsLeft = steps;
            hasFailed = tested.call.failsOn(&reference);
            reference.stepsLeft = {};
            const std::u16string text = textOf(reference);
            applyAll(tested.after, &reference);
            allowed.emplace_back(text, textOf(reference));
        }
        const auto withoutFailure = allowed.back();
        allowed.pop_back();
        // Without room for this much more text, a piece needs memory.
        for (const std::size_t room : tested.isSecond ? std::array{0, 20} : std::array{5, 1000}) {
            failEachAllocation([&](FailingAllocation& failure) {
                std::u16string target;
                std::optional<utils::XmlWriter> writer;
                if (failure.during([&] { writer.emplace(target); })) {
                    return;
                }
                applyAll(tested.before, &*writer);
                std::u16string withRoom(target.size() + room, u' ');
                withRoom = target;
                target = std::move(withRoom);
                failure.during([&] { tested.call.applyTo(&*writer); });
                const std::u16string text = target;
                applyAll(tested.after, &*writer);
                const std::pair found(text, target);
                EXPECT_TRUE(failure.hasHappened() ? std::ranges::count(allowed, found) > 0
                                                  : found == withoutFailure)
                    << tested << "with room for " << room << ":\n"
                    << referenceUtf8(text) << "\n  and in the end\n"
                    << referenceUtf8(target);
            });
        }
    });
}

TEST(WriterFailures, OfMemoryForANameComesBeforeTheTextOfIt)
{
    const std::u16string name = u"too-long-for-a-string-without-an-allocation";
    failEachAllocation([&](FailingAllocation& failure) {
        std::u16string target;
        target.reserve(1000);
        std::optional<utils::XmlWriter> writer;
        const bool hasFailed = failure.during([&] { writer.emplace(target); }) ||
                               failure.during([&] { writer->writeStartElement(name, u"", u""); });
        EXPECT_EQ(target, hasFailed ? u"" : u"\n<" + name);
    });
}

TEST(WriterFailures, OfMemoryInAConversionLoseAndDoubleNothing)
{
    const std::u16string batch(8192, u'\u4E2D');
    failEachAllocation([&](FailingAllocation& failure) {
        std::string target;
        std::optional<utils::XmlWriter> writer;
        if (failure.during([&] { writer.emplace(target); })) {
            return;
        }
        *writer = utils::XmlWriter(target); // frees what the first one had
        writer->writeRawXml(batch);
        const bool hasFailed = failure.during([&] { writer->writeRawXml(u"."); });
        EXPECT_EQ(target.empty(), hasFailed);
        failure.during([&] { writer->writeEndDocument(); });
        writer->writeEndDocument();
        EXPECT_EQ(target.substr(0, 3 * batch.size()), referenceUtf8(batch));
        const std::string rest = target.substr(3 * batch.size());
        EXPECT_TRUE(rest == "." || (rest.empty() && failure.hasHappened())) << rest;
    });
}

} // namespace

} // namespace tarn::tests
