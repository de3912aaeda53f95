// Texts on which a vector kernel could differ from the plain way of doing its work.
#pragma once

#include "support/difference.hpp"
#include "support/GuardedText.hpp"

#include <random>
#include <span>
#include <string>
#include <string_view>

namespace tarn::tests {

/// Calls @p faultOf with texts that lie beside a page that cannot be touched, until it returns a
/// fault: each of @p units at every place of every length, among units of @p background, then
/// random ones of every length.
/// @returns the fault and the text that shows it; nothing if there is none.
std::string faultOfKernelTexts(std::span<const char16_t> units, char16_t background,
                               const auto& faultOf)
{
    const auto check = [&](std::u16string_view text) {
        const std::string fault = faultOf(text);
        return fault.empty()
                   ? ""
                   : fault + "\n  of " + std::to_string(text.size()) + " units: " + shown(text);
    };
    constexpr std::size_t LONGEST_OF_ALL_PLACES = 100;
    constexpr std::size_t LONGEST = 300;
    for (std::size_t length = 0; length <= LONGEST_OF_ALL_PLACES; ++length) {
        GuardedText text(std::u16string(length, background));
        for (char16_t& place : text) {
            for (const char16_t unit : units) {
                place = unit;
                if (std::string fault = check(text.view()); !fault.empty()) {
                    return fault;
                }
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
            for (const auto guard : {GuardedText::Guard::Before, GuardedText::Guard::After}) {
                if (std::string fault = check(GuardedText(text, guard).view()); !fault.empty()) {
                    return fault;
                }
            }
        }
    }
    return "";
}

} // namespace tarn::tests
