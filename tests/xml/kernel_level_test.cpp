// Which kernels are used, in a program for which BEST_KERNELS says it.

#include <tarn/xml/text_escaping.hpp>
#include <text/kernel_level.hpp>
#include <text/utf8_encoder.hpp>

#include <gtest/gtest.h>

namespace tarn::tests {

namespace {

using text::KernelLevel;

TEST(KernelLevel, IsNotAboveThatOfThisProgram)
{
    for (const KernelLevel level :
         {KernelLevel::Portable, KernelLevel::Ssse3, KernelLevel::Avx2, KernelLevel::Avx512}) {
        EXPECT_TRUE(level <= KernelLevel::BEST_KERNELS || !text::canUse(level))
            << static_cast<int>(level);
    }
    EXPECT_TRUE(text::canUse(KernelLevel::Portable));
    EXPECT_EQ(text::utf8EncoderForAvx512() != nullptr, text::canUse(KernelLevel::Avx512));
    EXPECT_EQ(text::utf8EncoderForAvx2() != nullptr, text::canUse(KernelLevel::Avx2));
    EXPECT_EQ(text::utf8EncoderForSsse3() != nullptr, text::canUse(KernelLevel::Ssse3));
    EXPECT_EQ(utils::detail::escaperForAvx2() != nullptr, text::canUse(KernelLevel::Avx2));
}

} // namespace

} // namespace tarn::tests
