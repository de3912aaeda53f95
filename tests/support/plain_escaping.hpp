// The work of the escaping kernels done one code unit at a time, to compare them with.
#pragma once

#include <tarn/xml/text_escaping.hpp>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace tarn::tests {

/// The entity reference for @p unit; empty if it is none of the five markup characters.
constexpr std::u16string_view plainEntity(char16_t unit)
{
    switch (unit) {
    case u'<':
        return u"&lt;";
    case u'>':
        return u"&gt;";
    case u'&':
        return u"&amp;";
    case u'"':
        return u"&quot;";
    case u'\'':
        return u"&apos;";
    default:
        return {};
    }
}

/// Whether @p unit is one of the control characters that the writer references or leaves out.
constexpr bool isPlainControl(char16_t unit)
{
    return (unit >= 0x01 && unit <= 0x08) || unit == 0x0B || unit == 0x0C ||
           (unit >= 0x0E && unit <= 0x1F);
}

/// As utils::detail::findSpecial().
inline const char16_t* findSpecialPlain(const char16_t* first, const char16_t* last)
{
    return std::find_if(first, last, [](char16_t unit) {
        return !plainEntity(unit).empty() || isPlainControl(unit);
    });
}

/// As utils::detail::escapeMarkup().
inline utils::detail::EscapedRun escapeMarkupPlain(const char16_t* first, const char16_t* last,
                                                   char16_t* out, const char16_t* outLast)
{
    while (first != last && !isPlainControl(*first) &&
           static_cast<std::size_t>(outLast - out) >= utils::detail::ESCAPING_MARGIN) {
        const std::u16string_view entity = plainEntity(*first);
        out = entity.empty() ? (*out = *first, out + 1) : std::ranges::copy(entity, out).out;
        ++first;
    }
    return {first, out};
}

} // namespace tarn::tests
