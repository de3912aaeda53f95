// What UTF-16 code units mean.
#pragma once

namespace corda::i18n::detail {

constexpr bool is_surrogate(char16_t unit)
{
    return (unit & 0xF800) == 0xD800;
}

constexpr bool is_high_surrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool is_low_surrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

} // namespace corda::i18n::detail
