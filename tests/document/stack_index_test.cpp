// The hash table of names in scope, against a search of a plain list.

#include "support/colliding_names.hpp"
#include "support/GuardedText.hpp"

#include <tarn/document/StackIndex.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace tarn::tests {

namespace {

using document::detail::hashOf;
using document::detail::StackIndex;

/// Adds and ends entries, and expects to find the newest one of each name.
void addAndEnd(const std::vector<std::string>& names)
{
    StackIndex index;
    std::vector<std::string> entries;
    std::mt19937 random(1);
    for (int step = 0; step < 2000; ++step) {
        if (random() % 16 == 0) {
            entries.resize(random() % (entries.size() + 1));
            index.shrinkTo(entries.size());
        }
        entries.push_back(names[random() % names.size()]);
        index.add(hashOf(entries.back()));
        for (const std::string& name : names) {
            const auto after = std::find(entries.rbegin(), entries.rend(), name).base();
            const auto isName = [&](std::size_t entry) { return entries.at(entry) == name; };
            ASSERT_EQ(index.find(hashOf(name), isName), after - entries.begin() - 1) << step;
        }
    }
}

TEST(StackIndex, FindsTheNewestEntryOfEachName)
{
    std::vector<std::string> ordinary;
    std::vector<std::string> meeting;
    for (unsigned number = 0; number < 20; ++number) {
        ordinary.push_back(std::to_string(number));
        meeting.push_back(meetingText(number));
    }
    addAndEnd(ordinary);
    addAndEnd(meeting);
    EXPECT_EQ(hashOf(meetingText(0)), hashOf(meetingText(1)));
    EXPECT_NE(hashOf(meetingText(1)), hashOf(meetingText(2)));
    for (const auto guard : {GuardedText::Guard::Before, GuardedText::Guard::After}) {
        GuardedText four(u"\u3231\u3433", guard);
        EXPECT_EQ(hashOf({reinterpret_cast<const char*>(four.begin()), 4}), hashOf("1234"));
    }
}

} // namespace

} // namespace tarn::tests
