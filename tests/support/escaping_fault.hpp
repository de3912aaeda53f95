// The escaping kernels on one text.
#pragma once

#include "support/difference.hpp"
#include "support/GuardedText.hpp"
#include "support/plain_escaping.hpp"

#include <string>
#include <string_view>

namespace tarn::tests {

/// Searches @p text for special code units and copies it with replacements to @p output, from its
/// beginning to its end. Where a copy stops, the next one begins.
/// @returns what the kernels do wrong; nothing if all is right.
inline std::string faultOfEscaping(std::u16string_view text, GuardedText& output)
{
    const char16_t* const last = text.data() + text.size();
    std::u16string copy;
    std::u16string expected;
    for (const char16_t* first = text.data(); first != last;) {
        if (utils::detail::findSpecial(first, last) != findSpecialPlain(first, last)) {
            return "another special code unit is found in " + shown({first, last});
        }
        const auto run = utils::detail::escapeMarkup(first, last, output.begin(), output.end());
        copy.append(output.begin(), run.written);
        const bool moves = run.read != first;
        for (; first != run.read; ++first) {
            if (isPlainControl(*first)) {
                return "the copy does not stop before a control character of " + shown(text);
            }
            const std::u16string_view entity = plainEntity(*first);
            expected += entity.empty() ? std::u16string_view(first, 1) : entity;
        }
        const auto room = static_cast<std::size_t>(output.end() - run.written);
        const bool isFull = room < utils::detail::ESCAPING_MARGIN;
        if (isFull && !moves) {
            break;
        }
        if (!isFull && first != last) {
            if (!isPlainControl(*first)) {
                return "the copy stops too early in " + shown({first, last});
            }
            ++first;
        }
    }
    return difference(copy, expected);
}

} // namespace tarn::tests
