#include "support/reference_utf8.hpp"

#include <corda/i18n/codecvt_ustring_to_string.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace tarn::tests {

namespace {

using corda::i18n::codecvt_ustring_to_string;

std::string convert(std::u16string_view text, bool replaceUnpaired)
{
    return codecvt_ustring_to_string("UTF-8", replaceUnpaired).do_convert(text.data(), text.size());
}

TEST(Converter, TakesTheNameOfUtf8InAnyCaseAndNamesAnyOther)
{
    for (const char* name : {"UTF-8", "utf-8", "Utf-8"}) {
        EXPECT_NO_THROW(codecvt_ustring_to_string(name, true)) << name;
    }
    for (const char* name : {"", "UTF8", "UTF-16", "UTF-8 ", "ISO-8859-1"}) {
        try {
            codecvt_ustring_to_string(name, true);
            FAIL() << "accepted \"" << name << '"';
        } catch (const std::invalid_argument& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr('"' + std::string(name) + '"'));
        }
    }
}

TEST(Converter, ReplacesOrReportsEachUnpairedSurrogate)
{
    const std::tuple<std::u16string, std::string, std::string> cases[] = {
        {u"\xD800", "\uFFFD", "0"},
        {u"a\xDC00", "a\uFFFD", "1"},
        {u"\xD800\xD800", "\uFFFD\uFFFD", "0"},
        {u"\U0001F600\xDC00", "\U0001F600\uFFFD", "2"},
        {u"\xD800\U0001F600", "\uFFFD\U0001F600", "0"},
        {std::u16string(70'000, u'x') + u"\xDFFF" + std::u16string(100, u'y'),
         std::string(70'000, 'x') + "\uFFFD" + std::string(100, 'y'), "70000"},
    };
    for (const auto& [text, replaced, position] : cases) {
        EXPECT_EQ(convert(text, true), replaced);
        try {
            convert(text, false);
            FAIL() << "accepted what becomes " << replaced;
        } catch (const std::range_error& error) {
            EXPECT_THAT(error.what(), testing::EndsWith(" " + position));
        }
    }
}

TEST(Converter, ConvertsExactlyTheGivenRun)
{
    EXPECT_EQ(convert(u"", false), "");
    EXPECT_EQ(convert(std::u16string_view(u"abc", 2), false), "ab");
    EXPECT_EQ(convert(std::u16string_view(u"a\0b", 3), false), std::string("a\0b", 3));
}

} // namespace

} // namespace tarn::tests
