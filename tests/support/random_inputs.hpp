// Random bytes from many seeds, and the command that tries one of them again.
#pragma once

#include "support/Input.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace tarn::tests {

/// Calls @p check with an input of fewer than @p mostBytes from each of so many seeds, or from the
/// seed that the environment names. Stops when the test has failed. Works on several threads, which
/// shows that nothing is shared that changes.
inline void forRandomInputs(unsigned seeds, std::size_t mostBytes, const auto& check)
{
    constexpr auto SEED_VARIABLE = "TARN_TEST_SEED";
    const auto checkSeed = [&](unsigned seed) {
        std::mt19937 random(seed);
        std::string bytes(random() % mostBytes, '-');
        std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
        const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
        SCOPED_TRACE(std::string("run again: ") + SEED_VARIABLE + '=' + std::to_string(seed) + ' ' +
                     std::filesystem::read_symlink("/proc/self/exe").string() +
                     " --gtest_filter=" + test.test_suite_name() + '.' + test.name());
        check(Input(bytes));
    };
    if (const char* const seed = std::getenv(SEED_VARIABLE)) {
        return checkSeed(static_cast<unsigned>(std::stoul(seed)));
    }
    constexpr unsigned THREADS = 4;
    std::vector<std::jthread> threads;
    for (unsigned first = 0; first < THREADS; ++first) {
        threads.emplace_back([=, &checkSeed] {
            for (unsigned seed = first; seed < seeds && !testing::Test::HasFailure();
                 seed += THREADS) {
                checkSeed(seed);
            }
        });
    }
}

} // namespace tarn::tests
