// The index over the namespace bindings, against searches of the map itself.

#include "support/colliding_names.hpp"

#include <tarn/xml/BindingIndex.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

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

TEST(BindingIndex, ComparesNamesAtEveryPlace)
{
    for (std::size_t length = 1; length <= 600; length += length < 100 ? 1 : 200) {
        for (std::size_t place = 0; place < length; ++place) {
            std::u16string name(length, u'n');
            BindingIndex::Bindings bindings;
            BindingIndex index(bindings);
            const std::uint32_t hash = index.find(name).hash;
            index.reserve();
            index.add({bindings.emplace(name, u"").first, hash});
            ASSERT_EQ(index.find(name).binding, bindings.begin());
            std::set<std::uint32_t> slots;
            for (unsigned bit = 1; bit <= 0x8000; bit <<= 1) {
                name[place] = static_cast<char16_t>(u'n' ^ bit);
                ASSERT_EQ(index.find(name).binding, bindings.end()) << length << ' ' << place;
                slots.insert(index.find(name).hash % 0x1000);
            }
            EXPECT_GE(slots.size(), 12) << "too many collide: " << length << ' ' << place;
        }
    }
}

TEST(BindingIndex, MovesANameBackFromTheFarthestSlot)
{
    constexpr unsigned FARTHEST = 15;
    BindingIndex::Bindings bindings;
    BindingIndex index(bindings);
    std::vector<std::u16string> names(FARTHEST + 1);
    const auto add = [&](const std::u16string& name) {
        const std::uint32_t hash = index.find(name).hash;
        index.reserve();
        index.add({bindings.emplace(name, u"").first, hash});
    };
    // One for each slot in a row, and another for the first of these.
    for (unsigned number = 0; names.back().empty(); ++number) {
        const std::u16string name = ordinaryName(number);
        const std::uint32_t slot = index.find(name).hash % 32;
        if (slot < FARTHEST) {
            std::u16string& place = slot == 0 && !names[0].empty() ? names.back() : names[slot];
            if (place.empty()) {
                place = name;
            }
        }
    }
    std::ranges::for_each(names, add);
    index.remove(index.find(names.front()));
    bindings.erase(names.front());
    for (unsigned number = 0; bindings.size() < names.size(); ++number) {
        if (index.find(ordinaryName(number)).hash % 32 > FARTHEST) {
            add(ordinaryName(number)); // the name that was added last is found in another way
        }
    }
    EXPECT_EQ(index.find(names.back()).binding, bindings.find(names.back()));
}

} // namespace

} // namespace tarn::tests
