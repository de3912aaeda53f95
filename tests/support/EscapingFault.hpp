// The kernels behind escaping, on one text.
#pragma once

#include "support/Difference.hpp"
#include "support/GuardedBuffer.hpp"

#include <tarn/xml/TextEscaping.hpp>

#include <string>
#include <string_view>

namespace tarn::tests {

/// Searches and copies @p text from end to end where it lies. A run of the copy gets @p room code
/// units; after it stops, the next one begins.
/// @returns what a kernel does wrong; nothing if all is as it should be.
inline std::string faultOfEscaping(std::u16string_view text, std::size_t room)
{
    constexpr std::size_t LONGEST_REPLACEMENT = 6;
    std::u16string whole(text.size() * LONGEST_REPLACEMENT + utils::ESCAPING_MARGIN, u'-');
    auto output = GuardedBuffer<char16_t>::endingAtGuard(std::u16string(room, u'-'));
    const char16_t* const outLast = output.data() + room;
    const char16_t* const last = text.data() + text.size();
    for (const auto escape : {utils::escapeMarkup, utils::escapeMarkupPortable}) {
        const char16_t* first = text.data();
        while (first != last) {
            const char16_t* const special = utils::findSpecialPortable(first, last);
            if (utils::findSpecial(first, last) != special) {
                return "another special code unit is found in " + shown({first, last});
            }
            const utils::EscapedRun run = escape(first, last, output.data(), outLast);
            const utils::EscapedRun expected = utils::escapeMarkupPortable(
                first, run.read, whole.data(), whole.data() + whole.size());
            const std::u16string_view copy(output.data(), run.written);
            const std::u16string_view expectedCopy(whole.data(), expected.written);
            if (copy != expectedCopy || run.read != expected.read) {
                return "another copy of " + shown({first, last}) + difference(copy, expectedCopy);
            }
            const auto left = static_cast<std::size_t>(outLast - run.written);
            if (run.read == first && left < utils::ESCAPING_MARGIN) {
                break; // It is not to move with so little room.
            }
            first = run.read;
            if (first != last && left >= utils::ESCAPING_MARGIN) {
                const bool isSpecial = utils::findSpecialPortable(first, last) == first;
                if (!isSpecial || !utils::entityReference(*first).empty()) {
                    return "the copy stops too early in " + shown({first, last});
                }
                ++first; // a control character
            }
        }
    }
    return "";
}

} // namespace tarn::tests
