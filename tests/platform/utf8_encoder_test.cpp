// Each vector kernel against the plain conversion: at every length and alignment, with every kind
// of code unit at every place, and up to the last byte of a page.

#include "support/EncodingFault.hpp"
#include "support/GuardedBuffer.hpp"

#include <corda/i18n/utf8_encoder.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace tarn::tests {

namespace {

using namespace corda::i18n::detail;

constexpr char16_t KINDS[] = {
    0x0000, 0x0041, 0x007F, 0x0080, 0x00E9, 0x07FF, 0x0800, 0x4E2D,
    0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF,
};

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
    for (const char16_t background : {u'a', u'\u00E9', u'\u4E2D'}) {
        for (std::size_t length = 1; length <= 100; ++length) {
            std::u16string text(length, background);
            for (std::size_t place = 0; place < length; ++place) {
                for (const char16_t kind : KINDS) {
                    text[place] = kind;
                    check(text);
                }
                text[place] = background;
            }
        }
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

TEST_P(Utf8EncoderTest, ReadsNothingAfterTheEndOrBeforeTheBeginning)
{
    std::mt19937 random(1);
    for (std::size_t length = 0; length <= 100; ++length) {
        for (int repetition = 0; repetition < 20; ++repetition) {
            std::u16string text(length, u' ');
            const char16_t kinds = static_cast<char16_t>(1 + random() % std::size(KINDS));
            std::ranges::generate(text, [&] { return KINDS[random() % kinds]; });
            check(GuardedBuffer<char16_t>::endingAtGuard(text).view());
            check(GuardedBuffer<char16_t>::beginningAtGuard(text).view());
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
