// Each vector kernel against the plain conversion.

#include "support/EncodingFault.hpp"
#include "support/KernelTexts.hpp"

#include <corda/i18n/utf8_encoder.hpp>

#include <gtest/gtest.h>

#include <string>

namespace tarn::tests {

namespace {

using namespace corda::i18n::detail;

struct Kernel
{
    const char* name;
    Utf8Encoder encode;
};

class Utf8EncoderTest : public testing::TestWithParam<Kernel>
{
protected:
    void SetUp() override
    {
        if (GetParam().encode == nullptr) {
            GTEST_SKIP() << "this processor cannot run it";
        }
    }

    void check(std::u16string_view text)
    {
        ASSERT_EQ(faultOfEncoding(text, GetParam().encode), "");
    }
};

TEST_P(Utf8EncoderTest, EncodesEveryKindOfUnitAtEveryPlace)
{
    static constexpr char16_t KINDS[] = {
        0x0000, 0x0041, 0x007F, 0x0080, 0x00E9, 0x07FF, 0x0800, 0x4E2D,
        0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF,
    };
    for (const char16_t background : {u'a', u'\u00E9', u'\u4E2D'}) {
        forEachKernelText(KINDS, background, [&](std::u16string_view text) { check(text); });
    }
}

TEST_P(Utf8EncoderTest, EncodesSurrogatePairsAtEveryPlace)
{
    for (std::size_t length = 2; length <= 100; ++length) {
        for (std::size_t place = 0; place + 1 < length; ++place) {
            std::u16string text(length, u'\u0416');
            text[place] = 0xD83D;
            text[place + 1] = 0xDE00;
            check(text);
            text[length - 1] = 0xDBFF;
            check(text);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, Utf8EncoderTest,
                         testing::Values(Kernel{"chosen", encode_utf8},
                                         Kernel{"portable", encode_utf8_portable},
                                         Kernel{"ssse3", utf8_encoder_for_ssse3()},
                                         Kernel{"avx512", utf8_encoder_for_avx512()}),
                         [](const auto& info) { return info.param.name; });

} // namespace

} // namespace tarn::tests
