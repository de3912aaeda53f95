#include <corda/filesystem/basic_path.hpp>
#include <corda/filesystem/detail/make_native_form.hpp>

#include <gtest/gtest.h>

namespace tarn::tests {

namespace {

using namespace corda::filesystem;

TEST(MakeNativeForm, WritesAPathInItsShortestForm)
{
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u"", u""},
        {u"/", u"/"},
        {u"//", u"/"},
        {u"/.", u"/"},
        {u".", u"."},
        {u"./", u"."},
        {u"././/.", u"."},
        {u"a", u"a"},
        {u"a/", u"a"},
        {u"./a", u"a"},
        {u"//a//b/", u"/a/b"},
        {u"a/./b/.", u"a/b"},
        {u"a/../b", u"a/../b"},
        {u"..", u".."},
        {u"/..", u"/.."},
        {u"a/.../.b", u"a/.../.b"},
        {u"a\\b/c", u"a\\b/c"},
        {u"\xD800/", u"\xD800"},
    };
    for (const auto& [path, shortest] : cases) {
        EXPECT_EQ(detail::make_native_form(path, true), shortest);
        EXPECT_EQ(detail::make_native_form(path, false), path);
    }
}

TEST(BasicPath, HoldsUtf8)
{
    using Path = basic_path<char, char16_t, detail::path_traits<char, char16_t>>;
    EXPECT_TRUE(Path().empty());
    EXPECT_EQ(Path(u"caf\u00E9/\U0001F600").native(), "caf\u00E9/\U0001F600");
}

} // namespace

} // namespace tarn::tests
