#include <corda/filesystem/detail/make_native_form.hpp>
#include <halyard/cppmicroservices/readable_file.hpp>

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

TEST(FileIdentity, TellsFilesWithOneNumberOnTwoDevicesApart)
{
    using halyard::cppmicroservices::file_identity;
    EXPECT_LT((file_identity{1, 7}), (file_identity{2, 7}));
    EXPECT_LT((file_identity{1, 8}), (file_identity{2, 7}));
}

} // namespace

} // namespace tarn::tests
