// Random sequences of calls, compared with the reference writer after every call: on the three
// targets and piece by piece at the sink.

#include "support/Calls.hpp"
#include "support/RecordingSink.hpp"
#include "support/ReferenceUtf8.hpp"
#include "support/ReferenceWriter.hpp"
#include "support/SameText.hpp"
#include "support/SinkWriter.hpp"

#include <tarn/xml/XmlWriter.hpp>

#include <gtest/gtest.h>

#include <random>
#include <span>
#include <sstream>
#include <thread>
#include <vector>

namespace tarn::tests {

namespace {

class CallGenerator
{
public:
    explicit CallGenerator(unsigned seed) : random(seed) {}

    Call next()
    {
        static constexpr Operation FREQUENT[] = {
            Operation::writeStartElement, Operation::writeEndElement, Operation::writeAttribute,
            Operation::writeValue,        Operation::writeElement,
        };
        constexpr std::size_t OPERATIONS = 15;
        // An end of document closes everything, so it must be rare for sequences to go deep.
        auto operation = static_cast<Operation>(below(OPERATIONS));
        if (below(2) == 0 || (operation == Operation::writeEndDocument && below(8) != 0)) {
            operation = pick(FREQUENT);
        }
        switch (operation) {
        case Operation::writeStartDocument:
            return startDocument(below(2) == 0 ? u"1.0" : u"1.1");
        case Operation::writeRawXml:
        case Operation::writeValue:
            return {operation, {text()}};
        case Operation::writeStartElement:
        case Operation::writeEmptyElement:
        case Operation::writeStartAttribute:
            return {operation, {name(), uri(), prefix()}};
        case Operation::writeElement:
        case Operation::writeAttribute:
            switch (below(3)) {
            case 0:
                return {operation, {name(), text()}};
            case 1:
                return {operation, {name(), uri(), text()}};
            }
            return {operation, {name(), uri(), prefix(), text()}};
        case Operation::writeNamespace:
            return {operation, {uri(), prefix()}};
        case Operation::writeDefaultNamespace:
        case Operation::registerDefaultNamespace:
            return {operation, {uri()}};
        case Operation::writeEndDocument:
        case Operation::writeStartElementClose:
        case Operation::writeEndElement:
        case Operation::writeEndAttribute:
            return {operation};
        }
        return {};
    }

private:
    std::size_t below(std::size_t limit) { return random() % limit; }

    template <class Choice, std::size_t COUNT>
    Choice pick(const Choice (&choices)[COUNT])
    {
        return choices[below(COUNT)];
    }

    std::u16string name()
    {
        static const std::u16string NAMES[] = {u"a", u"", u"x:y", u"eleven-long", u"\u00E9\u4E2D"};
        return pick(NAMES);
    }

    std::u16string prefix()
    {
        static const std::u16string PREFIXES[] = {u"", u"", u"p", u"q", u"ns2", u"xml", u"xmlns"};
        return pick(PREFIXES);
    }

    std::u16string uri()
    {
        static const std::u16string URIS[] = {
            u"",
            u"",
            u"urn:a",
            u"urn:b",
            u"urn:\"<&'\x0B",
            u"http://example.org/a/rather/long/name/of/a/namespace/1",
            u"http://example.org/a/rather/long/name/of/a/namespace/2",
            u"http://www.w3.org/XML/1998/namespace",
            u"http://www.w3.org/2000/xmlns/",
        };
        return pick(URIS);
    }

    std::u16string text()
    {
        // Mostly short, now and then about a batch long or much longer.
        static constexpr std::size_t LONGEST[] = {1, 4, 10, 20, 40, 90, 200, 400};
        std::size_t length = below(pick(LONGEST) + 1);
        if (below(40) == 0) {
            length = 8192 + below(120) - 60;
        } else if (below(200) == 0) {
            length = 20'000;
        }
        static constexpr unsigned SPECIAL_SHARE[] = {0, 0, 3, 30};
        const unsigned specialPercent = pick(SPECIAL_SHARE);
        static constexpr char16_t UNITS[] =
            u"abcdefghij \u00E9\u0416\u4E2D\uFFFD\U0001F600\xD800\xDFFF";
        static constexpr char16_t SPECIALS[] = u"<>&\"'\x01\x08\t\n\x0B\x0C\r\x0E\x1F\x20\x7F";
        std::u16string units(length, u' ');
        for (char16_t& unit : units) {
            unit = below(100) < specialPercent ? pick(SPECIALS) : pick(UNITS);
        }
        return units;
    }

    std::mt19937_64 random;
};

/// Follows the pieces since the last call through a converting sink's buffer.
class BatchModel
{
public:
    void catchUp(const ReferenceWriter& reference)
    {
        for (const std::u16string& piece : reference.pieces) {
            buffer += piece;
            const bool endsInHighSurrogate = !buffer.empty() && (buffer.back() & 0xFC00) == 0xD800;
            if (buffer.size() > 8192 && !endsInHighSurrogate) {
                convert();
            }
        }
        if (flushes != reference.flushes) {
            flushes = reference.flushes;
            convert();
        }
    }

    std::string bytes;

private:
    void convert()
    {
        bytes += referenceUtf8(buffer);
        buffer.clear();
    }

    int flushes = 0;
    std::u16string buffer;
};

std::u16string joined(std::span<const std::u16string> pieces)
{
    std::u16string text;
    for (const std::u16string& piece : pieces) {
        text += piece;
    }
    return text;
}

void compareWithReference(unsigned seed)
{
    std::u16string units;
    std::string bytes;
    std::ostringstream stream;
    Recording recording;
    utils::XmlWriter unitsWriter(units);
    utils::XmlWriter bytesWriter(bytes);
    utils::XmlWriter streamWriter(stream);
    SinkWriter recordedWriter(std::make_unique<RecordingSink>(recording));
    ReferenceWriter unitsReference;
    ReferenceWriter bytesReference(u"UTF-8");
    BatchModel batches;

    CallGenerator generator(seed);
    Calls calls;
    std::size_t checkedUnits = 0;
    for (int i = 0; i < 150; ++i) {
        const Call call = generator.next();
        calls.push_back(call);
        apply(call, unitsWriter);
        apply(call, bytesWriter);
        apply(call, streamWriter);
        apply(call, recordedWriter);
        apply(call, unitsReference);
        apply(call, bytesReference);
        batches.catchUp(bytesReference);

        const std::u16string expected = joined(unitsReference.pieces);
        ASSERT_TRUE(sameText(joined(recording.pieces), expected)) << calls;
        ASSERT_EQ(recording.pieces, unitsReference.pieces) << calls;
        ASSERT_EQ(recording.flushes, unitsReference.flushes) << calls;
        ASSERT_TRUE(sameText(std::u16string_view(units).substr(checkedUnits), expected)) << calls;
        ASSERT_EQ(bytes, batches.bytes) << calls;
        ASSERT_EQ(stream.view(), batches.bytes) << calls;

        checkedUnits = units.size();
        recording.pieces.clear();
        unitsReference.pieces.clear();
        bytesReference.pieces.clear();
    }
}

TEST(RandomCalls, GiveTheSameTextAndPiecesAsTheReferenceWriter)
{
    // On several threads, which shows that writers share nothing that changes.
    constexpr unsigned THREADS = 4;
    constexpr unsigned SEEDS = IS_SANITIZED ? 200 : 1000;
    std::vector<std::jthread> threads;
    for (unsigned first = 0; first < THREADS; ++first) {
        threads.emplace_back([first] {
            for (unsigned seed = first; seed < SEEDS && !testing::Test::HasFailure();
                 seed += THREADS) {
                SCOPED_TRACE(seed);
                compareWithReference(seed);
            }
        });
    }
}

} // namespace

} // namespace tarn::tests
