// Each decoder against the plain conversion.

#include "support/decoding_fault.hpp"
#include "support/kernel_texts.hpp"

#include <gtest/gtest.h>

#include <text/utf16.hpp>

#include <random>
#include <string>

namespace tarn::tests {

namespace {

/// Where what a byte means in UTF-8 changes, and some in between.
constexpr unsigned char KINDS_OF_BYTES[] = {
    0x00, 0x0A, 0x3C, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBE, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0,
    0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xF7, 0xF8, 0xFC, 0xFE, 0xFF,
};

std::string faultOfUnits(std::u16string_view units)
{
    return faultOfDecoding(referenceUtf8(units));
}

TEST(Utf8Decoder, DecodesEveryCodePoint)
{
    std::u16string text;
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (codePoint >= 0x10000) {
            text += static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
            text += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
        } else if (!text::isSurrogate(static_cast<char16_t>(codePoint))) {
            text += static_cast<char16_t>(codePoint);
        }
        if (text.size() >= 200 || codePoint == 0x10FFFF) {
            const std::string bytes = referenceUtf8(text);
            ASSERT_EQ(detail::referenceUtf16(bytes).units, text); // the reference itself
            ASSERT_EQ(faultOfDecoding(bytes), "");
            text.clear();
        }
    }
}

TEST(Utf8Decoder, DecodesAndClassifiesEveryKindOfCharacterAtEveryPlace)
{
    static constexpr char16_t KINDS[] = {
        u'a',   0x7F,   0x80, 0x7FF, 0x800, 0xFFBF, 0xFFFD,
        0xFFFE, 0xFFFF, 0x08, u'\t', u'\r', 0x1F,   u'<',
    };
    for (const char16_t background : {u'a', u'\u4E2D'}) {
        ASSERT_EQ(faultOfKernelTexts(KINDS, background, faultOfUnits), "");
    }
}

TEST(Utf8Decoder, ClassifiesEveryByteOfAsciiInALaterStepThanTheFirst)
{
    for (char byte = 0x7F; byte >= 0; --byte) {
        ASSERT_EQ(faultOfDecoding(std::string(70, 'a') + byte + std::string(60, 'a')), "");
        ASSERT_EQ(faultOfDecoding(std::string("\u4E2D") + byte), "");
    }
}

/// Decodes the sequence alone and within text. It begins at every place in a step in turn, so that
/// sequences of each kind lie in two steps. Digits do not have the bit that tells a lead byte from
/// a continuation byte, and letters have it.
std::string faultOfSequence(const std::string& sequence)
{
    static std::size_t count = 0;
    const std::string text = std::string(++count % 67, '1') + sequence;
    return faultOfDecoding(count % 2 == 0 ? text : text + std::string(70, 'z'));
}

TEST(Utf8Decoder, StopsBeforeEveryIllFormedSequence)
{
    // Of the third and the fourth byte it matters only whether each is a continuation byte.
    static constexpr unsigned char KINDS_OF_LATER_BYTES[] = {0x00, 0x7F, 0x80, 0xBF, 0xC0, 0xF0};
    for (unsigned first = 0; first < 0x100; ++first) {
        ASSERT_EQ(faultOfSequence({static_cast<char>(first)}), "");
        for (unsigned second = 0; second < 0x100; ++second) {
            const std::string two = {static_cast<char>(first), static_cast<char>(second)};
            ASSERT_EQ(faultOfSequence(two), "");
            for (const unsigned char third : KINDS_OF_LATER_BYTES) {
                const std::string three = two + static_cast<char>(third);
                ASSERT_EQ(faultOfSequence(three), "");
                for (const unsigned char fourth : KINDS_OF_LATER_BYTES) {
                    if (first >= 0xF0) {
                        ASSERT_EQ(faultOfSequence(three + static_cast<char>(fourth)), "");
                    }
                }
            }
        }
    }
}

TEST(Utf8Decoder, StopsBeforeAChangedByteAtEveryPlace)
{
    std::mt19937 random(1);
    const std::u16string characters[] = {u"a",      u"<",      u"\u00E9",
                                         u"\u4E2D", u"\uFFFF", u"\U0001F600"};
    for (unsigned round = 0; round < 30; ++round) {
        std::string text;
        for (const std::size_t kinds = 1 + random() % std::size(characters); text.size() < 110;) {
            text += referenceUtf8(characters[(random() % kinds + round) % std::size(characters)]);
        }
        for (char& place : text) {
            const char kept = place;
            for (const unsigned char byte : KINDS_OF_BYTES) {
                place = static_cast<char>(byte);
                ASSERT_EQ(faultOfDecoding(text), "");
            }
            place = kept;
        }
        for (; !text.empty(); text.pop_back()) {
            ASSERT_EQ(faultOfDecoding(text), "");
        }
    }
}

} // namespace

} // namespace tarn::tests
