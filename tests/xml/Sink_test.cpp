// The sinks by themselves: when text reaches the target, and what is left after a failure.

#include <tarn/xml/Sink.hpp>

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tarn::tests {

namespace {

using namespace utils;

class BatchSink final : public ConvertingSink
{
public:
    std::vector<std::string> batches;
    int failures = 0;

protected:
    void writeConverted(const std::string& bytes) override
    {
        if (failures > 0) {
            --failures;
            throw std::runtime_error("batch");
        }
        batches.push_back(bytes);
    }
};

TEST(ConvertingSink, ConvertsOncePerBatchAtTheEndOfAPiece)
{
    const struct
    {
        std::vector<std::size_t> pieces;
        std::vector<std::size_t> batches;
    } cases[] = {
        {{8192}, {}},
        {{8192, 0}, {}},
        {{8192, 1}, {8193}},
        {{8193}, {8193}},
        {{20'000}, {20'000}},
        {{1, 8191, 5000, 3193, 8192}, {13'192, 11'385}},
        {{8000, 200, 8192, 1, 1}, {8200, 8193}},
    };
    for (const auto& [pieces, batches] : cases) {
        BatchSink sink;
        for (const std::size_t length : pieces) {
            EXPECT_EQ(&sink.write(std::u16string(length, u'a')), &sink);
        }
        std::vector<std::size_t> received;
        for (const std::string& batch : sink.batches) {
            received.push_back(batch.size());
        }
        EXPECT_EQ(received, batches) << testing::PrintToString(pieces);
    }
}

TEST(ConvertingSink, KeepsASurrogatePairTogether)
{
    BatchSink sink;
    sink.write(std::u16string(8192, u'a') + u"\xD83D");
    EXPECT_TRUE(sink.batches.empty());
    sink.write(u"");
    EXPECT_TRUE(sink.batches.empty());
    sink.write(u"\xDE00");
    ASSERT_EQ(sink.batches.size(), 1u);
    EXPECT_TRUE(sink.batches[0].ends_with("a\U0001F600"));
    sink.write(u"\xD83D");
    sink.flush();
    EXPECT_EQ(sink.batches[1], "\uFFFD");
}

TEST(ConvertingSink, PassesAnEmptyBatchOnWhenThereIsNothingToFlush)
{
    BatchSink sink;
    sink.flush();
    EXPECT_EQ(sink.batches, std::vector<std::string>{""});
    EXPECT_EQ(sink.encodingName(), u"UTF-8");
}

TEST(ConvertingSink, KeepsItsTextThroughFailures)
{
    BatchSink sink;
    sink.failures = 3;
    EXPECT_THROW(sink.write(std::u16string(8193, u'a')), std::runtime_error);
    EXPECT_THROW(sink.write(u"b"), std::runtime_error);
    EXPECT_THROW(sink.flush(), std::runtime_error);
    sink.write(u"");
    EXPECT_EQ(sink.batches, std::vector<std::string>{std::string(8193, 'a') + "b"});
    sink.flush();
    EXPECT_EQ(sink.batches.back(), "");
}

TEST(StreamSink, InsertsWithFormattingAndFlushesTheStream)
{
    std::ostringstream stream;
    StreamSink sink(stream);
    stream << std::setw(5) << std::setfill('*');
    sink.write(u"abc");
    sink.flush();
    EXPECT_EQ(stream.view(), "**abc");
    stream << std::setw(3);
    sink.flush();
    EXPECT_EQ(stream.width(), 0);
}

} // namespace

} // namespace tarn::tests
