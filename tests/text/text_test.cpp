#include <text/plain_ascii.hpp>
#include <text/utf16.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

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

TEST(PlainAscii, CopiesShortTextAmongMarkup)
{
    const std::string plain = "!#$%?ABCDEFGHIJKLMNOPQRSTUVWXYZ[]^_`abcdefghijklmnopqrstuvwxyz{|}~";
    for (std::size_t size = 0; size <= text::LONGEST_COPY; ++size) {
        const std::string text = plain.substr(0, size);
        const std::string markup(text::LONGEST_COPY, '<');
        const std::string around = markup + text + markup;
        std::string copy(2 * text::LONGEST_COPY, '-');
        ASSERT_EQ(text::copyIfPlainAscii(&around[markup.size()], size, copy.data()), &copy[size]);
        ASSERT_EQ(copy, text + std::string(copy.size() - size, '-'));
    }
}

} // namespace

} // namespace tarn::tests
