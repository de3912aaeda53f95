#include <text/utf16.hpp>

#include <gtest/gtest.h>

#include <cstdint>

namespace tarn::tests {

namespace {

TEST(Utf16, TellsTheHalvesOfSurrogatePairsFromAllOtherCodeUnits)
{
    for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
        const auto codeUnit = static_cast<char16_t>(unit);
        const bool isHigh = unit >= 0xD800 && unit <= 0xDBFF;
        const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
        ASSERT_EQ(text::isHighSurrogate(codeUnit), isHigh) << unit;
        ASSERT_EQ(text::isLowSurrogate(codeUnit), isLow) << unit;
        ASSERT_EQ(text::isSurrogate(codeUnit), isHigh || isLow) << unit;
    }
}

} // namespace

} // namespace tarn::tests
