// What UTF-16 code units mean.
#pragma once

namespace tarn::text {

constexpr bool isSurrogate(char16_t unit)
{
    return (unit & 0xF800) == 0xD800;
}

constexpr bool isHighSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool isLowSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

} // namespace tarn::text
