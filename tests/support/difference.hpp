// Comparison of texts with readable failure messages.
#pragma once

#include "support/reference_utf8.hpp"

#include <algorithm>
#include <string>
#include <string_view>

namespace tarn::tests {

inline std::string shown(std::u16string_view text)
{
    return referenceUtf8(text);
}
inline std::string shown(std::string_view text)
{
    return std::string(text);
}

/// Nothing if the two texts, in UTF-16 or in UTF-8, are the same; else both from shortly before
/// their first difference.
std::string difference(const auto& actual, const auto& expected)
{
    const std::basic_string_view actualView(actual);
    const std::basic_string_view expectedView(expected);
    if (actualView == expectedView) {
        return "";
    }
    const auto place = static_cast<std::size_t>(
        std::ranges::mismatch(actualView, expectedView).in1 - actualView.begin());
    const std::size_t from = place - std::min<std::size_t>(place, 60);
    constexpr std::size_t SHOWN = 200;
    return "texts of " + std::to_string(actualView.size()) + " and " +
           std::to_string(expectedView.size()) + " units differ at " + std::to_string(place) +
           "\n  actual:   " + shown(actualView.substr(from, SHOWN)) +
           "\n  expected: " + shown(expectedView.substr(from, SHOWN));
}

} // namespace tarn::tests
