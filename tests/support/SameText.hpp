// Comparison of UTF-16 texts with readable failure messages.
#pragma once

#include "support/ReferenceUtf8.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

namespace tarn::tests {

/// Succeeds if the two texts are the same; shows both from shortly before their first difference.
inline testing::AssertionResult sameText(std::u16string_view actual, std::u16string_view expected)
{
    if (actual == expected) {
        return testing::AssertionSuccess();
    }
    const auto difference =
        static_cast<std::size_t>(std::ranges::mismatch(actual, expected).in1 - actual.begin());
    const std::size_t from = difference - std::min<std::size_t>(difference, 60);
    constexpr std::size_t SHOWN = 200;
    return testing::AssertionFailure()
           << "texts of " << actual.size() << " and " << expected.size() << " units differ at "
           << difference << "\n  actual:   " << referenceUtf8(actual.substr(from, SHOWN))
           << "\n  expected: " << referenceUtf8(expected.substr(from, SHOWN));
}

} // namespace tarn::tests
