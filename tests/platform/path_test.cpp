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
    const file_identity identities[] = {{1, 7}, {1, 8}, {2, 7}, {2, 8}};
    for (const file_identity& left : identities) {
        for (const file_identity& right : identities) {
            EXPECT_EQ(left == right, &left == &right);
            EXPECT_EQ(left < right, &left < &right);
        }
    }
}

} // namespace

} // namespace tarn::tests
