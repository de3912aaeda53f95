// The kernels behind escaping, on texts that could show them wrong.

#include "support/escaping_fault.hpp"
#include "support/kernel_texts.hpp"

#include <tarn/xml/text_escaping.hpp>

#include <gtest/gtest.h>

namespace tarn::tests {

namespace {

std::string faultOf(std::u16string_view text)
{
    constexpr std::size_t ROOM = 2500; // for replacements alone
    static GuardedText output(std::u16string(ROOM, u'-'));
    const std::string fault = faultOfPlainCopy(text);
    return fault.empty() ? faultOfEscaping(text, output) : fault;
}

TEST(TextEscaping, TreatsEveryCodeUnitAsThePlainLoopDoes)
{
    constexpr std::size_t UNITS = 16; // in one text, at every place of a block
    for (std::uint32_t first = 0; first <= 0xFFFF; first += UNITS) {
        std::u16string text(5 * UNITS, u'a'); // a block, and the step that has to be behind it
        for (std::uint32_t i = 0; i < UNITS; ++i) {
            text[4 * i + first / UNITS % 4] = static_cast<char16_t>(first + i);
        }
        ASSERT_EQ(faultOf(text), "") << first;
    }
}

TEST(TextEscaping, FindsAndReplacesSpecialsAtEveryPlaceOfEveryLength)
{
    // With the neighbours of special code units and what equals them in the low byte or when it
    // saturates.
    static constexpr char16_t NEAR_MARKUP[] = {u'<',   u'>',   u'&',   u'"',   u'\'',  u'!',
                                               u'#',   u'%',   u'(',   u'=',   u'?',   u';',
                                               0x013C, 0x2622, 0xFF3C, 0x8027, 0x7F3E, 0x003A};
    static constexpr char16_t CONTROLS[] = {0x00, 0x01, 0x08, u'\t', u'\n', 0x0B,   0x0C,   u'\r',
                                            0x0E, 0x1F, 0x20, 0x7F,  0x80,  0xFF01, 0x8001, 0x0100};
    ASSERT_EQ(faultOfKernelTexts(NEAR_MARKUP, u'z', faultOf), "");
    ASSERT_EQ(faultOfKernelTexts(CONTROLS, u'z', faultOf), "");
}

TEST(TextEscaping, StopsInTimeWhenRoomIsShort)
{
    std::u16string mixed;
    for (int i = 0; i < 200; ++i) {
        mixed += i % 3 == 0 ? u"\"\"" : u"ab";
    }
    const std::u16string dense(400, u'"');
    for (std::size_t room = 0; room <= 1000; ++room) {
        GuardedText output(std::u16string(room, u'-'));
        ASSERT_EQ(faultOfEscaping(mixed, output), "") << room;
        ASSERT_EQ(faultOfEscaping(dense, output), "") << room;
    }
}

} // namespace

} // namespace tarn::tests
