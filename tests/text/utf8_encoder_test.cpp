// Each encoder against the plain conversion.

#include "support/encoding_fault.hpp"
#include "support/kernel_texts.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tarn::tests {

namespace {

TEST(Utf8Encoder, EncodesEveryKindOfUnitAtEveryPlace)
{
    static constexpr char16_t KINDS[] = {
        0x0000, 0x0041, 0x007F, 0x0080, 0x00E9, 0x07FF, 0x0800, 0x4E2D,
        0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF,
    };
    for (const char16_t background : {u'a', u'\u00E9', u'\u4E2D'}) {
        ASSERT_EQ(faultOfKernelTexts(KINDS, background, faultOfEncoding), "");
    }
}

TEST(Utf8Encoder, EncodesSurrogatePairsAtEveryPlace)
{
    for (const char16_t background : {u'\x7F', u'\x80', u'\x7FF', u'\x800', u'\xFFFF'}) {
        for (std::size_t length = 2; length <= 100; ++length) {
            ASSERT_EQ(faultOfEncoding(std::u16string(length, 0xDC00)), "") << length;
            for (std::size_t place = 0; place + 1 < length; ++place) {
                std::u16string text(length, background);
                text[place] = 0xD83D;
                text[place + 1] = 0xDE00;
                ASSERT_EQ(faultOfEncoding(text), "") << place << " of " << length;
                text[length - 1] = 0xDBFF;
                ASSERT_EQ(faultOfEncoding(text), "") << place << " of " << length;
            }
        }
    }
}

} // namespace

} // namespace tarn::tests
