// The index over the namespace bindings, against searches of the map itself.

#include <tarn/xml/BindingIndex.hpp>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace tarn::tests {

namespace {

using utils::detail::BindingIndex;

/// Names with a hash like any other.
std::u16string ordinaryName(unsigned number)
{
    const std::string digits = std::to_string(number);
    return u"http://example.org/namespace/" + std::u16string(digits.begin(), digits.end());
}

/// Names that all have the same hash: a product with their last four code units, which these make
/// zero.
std::u16string collidingName(unsigned number)
{
    return {u'u', u'r', u'n', static_cast<char16_t>(number), 0xED03, 0xD192, 0x4A32, 0xD1B5};
}

void addAndRemove(unsigned names, std::u16string (*nameOf)(unsigned))
{
    BindingIndex::Bindings bindings{{u"always", u""}};
    BindingIndex index(bindings);
    std::mt19937 random(1);
    for (int step = 0; step < 20'000; ++step) {
        // Mostly additions at first, mostly removals at the end.
        const std::u16string name = nameOf(random() % names);
        const bool isToAdd = random() % 20'000 > static_cast<unsigned>(step);
        const auto [binding, hash] = index.find(name);
        ASSERT_EQ(binding, bindings.find(name)) << step;
        if (binding == bindings.end() && isToAdd) {
            index.reserve();
            index.add({bindings.emplace(name, u"").first, hash});
        } else if (binding != bindings.end() && !isToAdd) {
            index.remove({binding, hash});
            bindings.erase(binding);
        }
        ASSERT_EQ(index.find(name).binding, bindings.find(name)) << step;
    }
    for (unsigned number = 0; number < names; ++number) {
        ASSERT_EQ(index.find(nameOf(number)).binding, bindings.find(nameOf(number))) << number;
    }
    ASSERT_EQ(index.find(u"always").binding, bindings.find(u"always"));
}

TEST(BindingIndex, FindsWhatTheMapHolds)
{
    for (const unsigned names : {3u, 20u, 300u, 5000u}) {
        SCOPED_TRACE(names);
        addAndRemove(names, ordinaryName);
        addAndRemove(names, collidingName);
    }
}

} // namespace

} // namespace tarn::tests
