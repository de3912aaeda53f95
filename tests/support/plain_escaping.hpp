// The work of the escaping kernels done one code unit at a time, to compare them with.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace tarn::tests {

/// The entity reference for @p unit; empty if it is none of the five markup characters.
constexpr std::u16string_view plainEntity(char16_t unit)
{
    return unit == u'<'    ? u"&lt;"
           : unit == u'>'  ? u"&gt;"
           : unit == u'&'  ? u"&amp;"
           : unit == u'"'  ? u"&quot;"
           : unit == u'\'' ? u"&apos;"
                           : u"";
}

/// Whether @p unit is one of the control characters that the writer references or leaves out.
constexpr bool isPlainControl(char16_t unit)
{
    return (unit >= 0x01 && unit <= 0x08) || unit == 0x0B || unit == 0x0C ||
           (unit >= 0x0E && unit <= 0x1F);
}

/// What stands for @p unit in a document of version 1.0, where control characters are left out, or
/// in another.
inline std::u16string plainReplacement(char16_t unit, bool isVersion10)
{
    if (!isPlainControl(unit)) {
        const std::u16string_view entity = plainEntity(unit);
        return std::u16string(entity.empty() ? std::u16string_view(&unit, 1) : entity);
    }
    if (isVersion10) {
        return unit == 0x0B ? u" " : u"";
    }
    const std::string number = std::to_string(unit);
    return u"&#" + std::u16string(number.begin(), number.end()) + u";";
}

/// As utils::detail::findSpecial().
inline const char16_t* findSpecialPlain(const char16_t* first, const char16_t* last)
{
    return std::find_if(first, last, [](char16_t unit) {
        return !plainEntity(unit).empty() || isPlainControl(unit);
    });
}

} // namespace tarn::tests
