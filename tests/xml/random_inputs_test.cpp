// Random bytes as calls and as documents.

#include "support/written_calls.hpp"
#include "support/written_document.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <thread>
#include <vector>

namespace tarn::tests {

namespace {

/// On several threads, which shows that writers share nothing that changes.
void expectNoFaults(unsigned inputs, std::string (*faultOf)(Input))
{
    constexpr unsigned THREADS = 4;
    std::vector<std::jthread> threads;
    for (unsigned first = 0; first < THREADS; ++first) {
        threads.emplace_back([=] {
            for (unsigned seed = first; seed < inputs && !testing::Test::HasFailure();
                 seed += THREADS) {
                std::mt19937 random(seed);
                std::vector<std::uint8_t> bytes(random() % 4000);
                std::generate(bytes.begin(), bytes.end(), std::ref(random));
                EXPECT_EQ(faultOf({bytes.data(), bytes.size()}), "") << seed;
            }
        });
    }
}

TEST(RandomInputs, GiveTheTextAndThePiecesOfTheReferenceWriter)
{
    expectNoFaults(IS_SANITIZED ? 1000 : 5000, [](Input input) {
        Calls calls;
        return faultOfCalls(input, calls);
    });
}

TEST(RandomInputs, GiveDocumentsThatSayWhatWentIn)
{
    xmlInitParser();
    expectNoFaults(500, faultOfDocument);
    xmlCleanupParser();
}

} // namespace

} // namespace tarn::tests
