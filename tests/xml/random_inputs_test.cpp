// Random bytes as calls and as documents.

#include "support/written_calls.hpp"
#include "support/written_document.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace tarn::tests {

namespace {

/// Names the one input to try instead of all.
constexpr auto SEED_VARIABLE = "TARN_TEST_SEED";

std::optional<unsigned> givenSeed()
{
    const char* const text = std::getenv(SEED_VARIABLE);
    return text == nullptr ? std::nullopt : std::optional(static_cast<unsigned>(std::stoul(text)));
}

/// The command that tries the input of @p seed again.
std::string commandFor(unsigned seed)
{
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    return std::string(SEED_VARIABLE) + '=' + std::to_string(seed) + ' ' +
           std::filesystem::read_symlink("/proc/self/exe").string() +
           " --gtest_filter=" + test.test_suite_name() + '.' + test.name();
}

void expectNoFault(unsigned seed, std::string (*faultOf)(Input))
{
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(random() % 4000);
    std::generate(bytes.begin(), bytes.end(), std::ref(random));
    EXPECT_EQ(faultOf({bytes.data(), bytes.size()}), "") << "run again: " << commandFor(seed);
}

/// On several threads, which shows that writers share nothing that changes.
void expectNoFaults(unsigned inputs, std::string (*faultOf)(Input))
{
    if (const std::optional<unsigned> seed = givenSeed()) {
        expectNoFault(*seed, faultOf);
        return;
    }
    constexpr unsigned THREADS = 4;
    std::vector<std::jthread> threads;
    for (unsigned first = 0; first < THREADS; ++first) {
        threads.emplace_back([=] {
            for (unsigned seed = first; seed < inputs && !testing::Test::HasFailure();
                 seed += THREADS) {
                expectNoFault(seed, faultOf);
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
