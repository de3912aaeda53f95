// The escaping kernels on one text.
#pragma once

#include "support/difference.hpp"
#include "support/GuardedText.hpp"
#include "support/plain_escaping.hpp"

#include <tarn/xml/copy_if_plain.hpp>
#include <tarn/xml/text_escaping.hpp>

#include <string>
#include <string_view>

namespace tarn::tests {

/// Copies @p text with replacements to @p output, from its beginning to its end, by one kernel.
/// Where a copy stops, the next one begins.
/// @returns what the kernel does wrong; nothing if all is right.
inline std::string faultOfEscaper(std::u16string_view text, bool isVersion10,
                                  const utils::detail::EscaperLevel& level, GuardedText& output)
{
    using namespace utils::detail;
    const char16_t* const last = text.data() + text.size();
    std::u16string copy;
    std::u16string expected;
    for (const char16_t* first = text.data(); first != last;) {
        const EscapedRun run = level.escape(first, last, output.begin(), output.end(),
                                            isVersion10 ? REPLACEMENTS_OF_XML_1_0 : REPLACEMENTS);
        copy.append(output.begin(), run.written);
        const auto room = static_cast<std::size_t>(output.end() - run.written);
        if (run.read != last && room >= ESCAPING_MARGIN) {
            return "the copy stops too early in " + shown({first, last});
        }
        for (const char16_t* unit = first; unit != run.read; ++unit) {
            expected += plainReplacement(*unit, isVersion10);
        }
        if (run.read == first) {
            break;
        }
        first = run.read;
    }
    return difference(copy, expected);
}

/// All kernels for escaping on @p text.
/// @returns what they do wrong; nothing if all is right.
inline std::string faultOfEscaping(std::u16string_view text, GuardedText& output)
{
    using namespace utils::detail;
    const char16_t* const last = text.data() + text.size();
    if (findSpecial(text.data(), last) != findSpecialPlain(text.data(), last)) {
        return "another special code unit is found in " + shown(text);
    }
    for (const EscaperLevel& level : escaperLevels()) {
        for (const bool isVersion10 : {false, true}) {
            const std::string fault =
                level.escape == nullptr ? "" : faultOfEscaper(text, isVersion10, level, output);
            if (!fault.empty()) {
                return fault + "\n  by the kernel for " + std::string(level.name);
            }
        }
    }
    return "";
}

/// The copy of short pieces, and that of values without special code units, on @p text.
/// @returns what it does wrong; nothing if all is right.
inline std::string faultOfPlainCopy(std::u16string_view text)
{
    GuardedText output(std::u16string(text.size(), u'-'));
    if (utils::detail::copyUnits(text, output.begin()) != output.end() || output.view() != text) {
        return "another copy of " + shown(text);
    }
    std::ranges::fill(output.begin(), output.end(), u'-');
    const char16_t* const end = utils::detail::copyIfPlain(text, output.begin());
    const bool isPlain = std::ranges::none_of(
        text, [](char16_t unit) { return unit < u' ' || !plainEntity(unit).empty(); });
    if (!isPlain) {
        return end == nullptr ? "" : "a special code unit counts as plain in " + shown(text);
    }
    return end == output.end() ? difference(output.view(), text)
                               : "plain text does not count as plain: " + shown(text);
}

} // namespace tarn::tests
