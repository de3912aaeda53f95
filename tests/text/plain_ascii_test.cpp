#include <text/plain_ascii.hpp>

#include <gtest/gtest.h>

#include <string>

namespace tarn::tests {

namespace {

TEST(PlainAscii, CopiesShortTextAmongOtherText)
{
    std::string around = "?ABCDEFGHIJKLMNOPQRSTUVWXYZ[]^_`abcdefghijklmnopqrstuvwxyz{|}~";
    around += around + around;
    const std::string_view text = std::string_view(around).substr(text::LONGEST_COPY);
    for (std::size_t size = 0; size <= text::LONGEST_COPY; ++size) {
        std::string copy(2 * text::LONGEST_COPY, '-');
        ASSERT_EQ(text::copyIfPlainAscii(text.data(), size, copy.data()), copy.data() + size);
        ASSERT_EQ(copy.substr(0, size), text.substr(0, size));
        ASSERT_EQ(copy.find_first_not_of('-', size), std::string::npos) << size;
    }
}

} // namespace

} // namespace tarn::tests
