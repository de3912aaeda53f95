// Texts on which a vector kernel could differ from the plain way of doing its work.
#pragma once

#include "support/GuardedText.hpp"

#include <random>
#include <span>
#include <string>
#include <string_view>

namespace tarn::tests {

/// Calls @p check with texts that lie beside a page that cannot be touched: each of @p units at
/// every place of every length, among units of @p background, then random ones of every length.
void forEachKernelText(std::span<const char16_t> units, char16_t background, const auto& check)
{
    constexpr std::size_t LONGEST_OF_ALL_PLACES = 100;
    constexpr std::size_t LONGEST = 300;
    for (std::size_t length = 0; length <= LONGEST_OF_ALL_PLACES; ++length) {
        GuardedText text(std::u16string(length, background));
        for (char16_t& place : text) {
            for (const char16_t unit : units) {
                place = unit;
                check(text.view());
            }
            place = background;
        }
    }
    std::mt19937 random(1);
    for (std::size_t length = 0; length <= LONGEST; ++length) {
        for (const unsigned percent : {5u, 50u, 100u}) {
            const std::size_t kinds = 1 + random() % units.size();
            std::u16string text(length, background);
            for (char16_t& unit : text) {
                unit = random() % 100 < percent ? units[random() % kinds] : unit;
            }
            check(GuardedText(text, GuardedText::Guard::Before).view());
            check(GuardedText(text, GuardedText::Guard::After).view());
        }
    }
}

} // namespace tarn::tests
