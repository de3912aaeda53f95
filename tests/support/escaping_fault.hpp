// The kernels behind escaping, on one text.
#pragma once

#include "support/difference.hpp"
#include "support/GuardedText.hpp"

#include <tarn/xml/text_escaping.hpp>

#include <string>
#include <string_view>

namespace tarn::tests {

/// Searches @p text and copies it to @p output, from end to end where it lies. Where the copy
/// stops, the next one begins.
/// @returns what a kernel does wrong; nothing if all is as it should be.
inline std::string faultOfEscaping(std::u16string_view text, GuardedText& output)
{
    const char16_t* const last = text.data() + text.size();
    const auto isControl = [](const char16_t* unit) {
        return utils::detail::findSpecialPortable(unit, unit + 1) == unit &&
               utils::detail::entityReference(*unit).empty();
    };
    for (const auto escape : {utils::detail::escapeMarkup, utils::detail::escapeMarkupPortable}) {
        std::u16string copy;
        std::u16string expected;
        for (const char16_t* first = text.data(); first != last;) {
            if (utils::detail::findSpecial(first, last) !=
                utils::detail::findSpecialPortable(first, last)) {
                return "another special code unit is found in " + shown({first, last});
            }
            const utils::detail::EscapedRun run = escape(first, last, output.begin(), output.end());
            copy.append(output.begin(), run.written);
            const bool moves = run.read != first;
            for (; first != run.read; ++first) {
                if (isControl(first)) {
                    return "the copy does not stop before a control character of " + shown(text);
                }
                const std::u16string_view entity = utils::detail::entityReference(*first);
                expected += entity.empty() ? std::u16string_view(first, 1) : entity;
            }
            const bool isFull = output.end() - run.written <
                                static_cast<std::ptrdiff_t>(utils::detail::ESCAPING_MARGIN);
            if (isFull && !moves) {
                break;
            }
            if (!isFull && first != last) {
                if (!isControl(first)) {
                    return "the copy stops too early in " + shown({first, last});
                }
                ++first;
            }
        }
        if (copy != expected) {
            return difference(copy, expected);
        }
    }
    return "";
}

} // namespace tarn::tests
