// Documents read back by a parser: the names, namespaces, attributes and texts that went in come
// out.

#include "support/WrittenDocument.hpp"

#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace tarn::tests {

namespace {

TEST(ReadBack, GivesWhatWasWritten)
{
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        std::vector<std::uint8_t> bytes(random() % 2000);
        std::generate(bytes.begin(), bytes.end(), std::ref(random));
        ASSERT_EQ(faultOfDocument({bytes.data(), bytes.size()}), "") << seed;
    }
    xmlCleanupParser();
}

} // namespace

} // namespace tarn::tests
