// The index over the namespace bindings, against searches of the map itself.

#include "support/colliding_names.hpp"

#include <tarn/xml/BindingIndex.hpp>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace tarn::tests {

namespace {

using utils::detail::BindingIndex;

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
    addAndRemove(12, nameAroundTheEnd<32>);
    addAndRemove(40, nameAroundTheEnd<128>);
}

} // namespace

} // namespace tarn::tests
