#include <tarn/utils/num_to_string.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using tarn::utils::num_to_string;

TEST(NumToString, WritesTheDecimalDigits)
{
    const std::pair<unsigned long, std::u16string> cases[] = {
        {0, u"0"},
        {9'999'999'999, u"9999999999"},
        {10'000'000'000'000'000'000u, u"10000000000000000000"},
        {std::numeric_limits<unsigned long>::max(), u"18446744073709551615"},
    };
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(num_to_string(value), text) << value;
    }
}

} // namespace
