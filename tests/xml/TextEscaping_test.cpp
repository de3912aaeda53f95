// The vector kernels against their portable twins: at every length and alignment, with special code
// units at every place, and up to the last byte of a page.

#include "support/EscapingFault.hpp"
#include "support/GuardedBuffer.hpp"

#include <tarn/xml/TextEscaping.hpp>

#include <gtest/gtest.h>

#include <random>
#include <span>

namespace tarn::tests {

namespace {

/// Beside the special code units, their neighbours and what equals them in the low byte or when it
/// saturates.
constexpr char16_t NEAR_MARKUP[] = {u'<',   u'>',   u'&',   u'"',   u'\'',  u'!',
                                    u'#',   u'%',   u'(',   u'=',   u'?',   u';',
                                    0x013C, 0x2622, 0xFF3C, 0x8027, 0x7F3E, 0x003A};
constexpr char16_t CONTROLS[] = {0x00, 0x01, 0x08, u'\t', u'\n', 0x0B,   0x0C,   u'\r',
                                 0x0E, 0x1F, 0x20, 0x7F,  0x80,  0xFF01, 0x8001, 0x0100};

void check(std::u16string_view text, std::size_t room = 2500)
{
    ASSERT_EQ(faultOfEscaping(text, room), "");
}

TEST(TextEscaping, TreatsEveryCodeUnitAsItsPortableTwinDoes)
{
    constexpr std::size_t UNITS = 16; // in one text, at every place of a block
    for (std::uint32_t first = 0; first <= 0xFFFF; first += UNITS) {
        std::u16string text(4 * UNITS, u'a');
        for (std::uint32_t i = 0; i < UNITS; ++i) {
            text[4 * i + first / UNITS % 4] = static_cast<char16_t>(first + i);
        }
        check(text);
    }
}

TEST(TextEscaping, FindsSpecialsAtEveryPlaceOfEveryLength)
{
    for (std::size_t length = 0; length <= 180; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::u16string text(length, u'x');
            text[place] = u'&';
            check(text);
            text[length - 1] = 0x1F;
            check(text);
        }
    }
}

TEST(TextEscaping, StaysInsideItsTextAndItsRoom)
{
    std::mt19937 random(7);
    const auto randomText = [&](std::size_t length, std::span<const char16_t> units,
                                unsigned percent) {
        std::u16string text(length, u'z');
        for (char16_t& unit : text) {
            if (random() % 100 < percent) {
                unit = units[random() % units.size()];
            }
        }
        return text;
    };
    for (std::size_t length = 0; length <= 300; ++length) {
        for (const unsigned percent : {0u, 5u, 50u, 100u}) {
            for (const std::span<const char16_t> units :
                 {std::span<const char16_t>(NEAR_MARKUP), std::span<const char16_t>(CONTROLS)}) {
                const std::u16string text = randomText(length, units, percent);
                check(GuardedBuffer<char16_t>::endingAtGuard(text).view());
                check(GuardedBuffer<char16_t>::beginningAtGuard(text).view());
            }
        }
    }
}

TEST(TextEscaping, StopsInTimeWhenRoomIsShort)
{
    const std::u16string text = [] {
        std::u16string units;
        for (int i = 0; i < 200; ++i) {
            units += i % 3 == 0 ? u"\"\"" : u"ab";
        }
        return units;
    }();
    for (std::size_t room = 0; room <= 1000; ++room) {
        check(text, room);
    }
}

TEST(TextEscaping, HasNoReferenceForOtherCodeUnits)
{
    for (const char16_t unit : {u'\0', u'\x01', u'\n', u'a', u'@', u'\x3C3C', u'\xFFFF'}) {
        EXPECT_TRUE(utils::entityReference(unit).empty()) << static_cast<unsigned>(unit);
    }
}

} // namespace

} // namespace tarn::tests
