// A stream that fails again and again, with and without exceptions: nothing is lost that the caller
// is not told of, and nothing is doubled.

#include "support/reference_utf8.hpp"

#include <tarn/xml/XmlWriter.hpp>

#include <gtest/gtest.h>
#include <ios>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>

namespace tarn::tests {

namespace {

/// Takes bytes except at every so many calls.
class UnsteadyBuffer : public std::streambuf
{
public:
    UnsteadyBuffer(int period, bool throws) : period(period), throws(throws) {}

    /// What has been taken.
    std::string taken;
    /// What has been taken and refused.
    std::string offered;
    /// The number of the calls from one that fails to the next; none fails if it is 0.
    int period;

protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override
    {
        offered.append(bytes, static_cast<std::size_t>(count));
        if (fails()) {
            return 0;
        }
        taken.append(bytes, static_cast<std::size_t>(count));
        return count;
    }
    int sync() override { return fails() ? -1 : 0; }

private:
    bool fails()
    {
        if (period == 0 || ++calls % period != 0) {
            return false;
        }
        return throws ? throw std::runtime_error("unsteady") : true;
    }

    bool throws;
    int calls = 0;
};

/// Does @p work and makes the stream usable again if it failed.
void recovering(std::ostream& stream, auto work)
{
    try {
        work();
        EXPECT_TRUE(!stream.fail() || stream.exceptions() == std::ios::goodbit);
    } catch (const std::exception&) {
        EXPECT_TRUE(stream.fail());
    }
    stream.clear();
}

TEST(StreamFailures, LoseAndDoubleNothing)
{
    for (const bool isToThrow : {false, true}) {
        for (const bool throws : {false, true}) {
            for (int period = 1; period < 12; ++period) {
                SCOPED_TRACE(testing::Message() << isToThrow << throws << ' ' << period);
                UnsteadyBuffer buffer(period, throws);
                std::ostream stream(&buffer);
                stream.exceptions(isToThrow ? std::ios::badbit : std::ios::goodbit);
                utils::XmlWriter writer(stream);
                std::string whole;
                for (char16_t unit = u'\u03B1'; unit < u'\u03C9'; ++unit) {
                    const std::u16string text(1500, unit);
                    whole += referenceUtf8(text);
                    recovering(stream, [&] { writer.writeRawXml(text); });
                    if (unit % 10 == 0) {
                        recovering(stream, [&] { writer.writeEndDocument(); });
                    }
                }
                buffer.period = 0;
                writer.writeEndDocument();
                EXPECT_EQ(isToThrow ? buffer.taken : buffer.offered, whole);
            }
        }
    }
}

} // namespace

} // namespace tarn::tests
