// Converts one code point at a time.
#pragma once

#include <string>

namespace corda::i18n {

struct codecvt_ustring_to_string
{
    codecvt_ustring_to_string(const std::string& /*encoding*/, bool /*replaceUnpaired*/) {}
    std::string do_convert(const char16_t* text, unsigned long length) const;
};

} // namespace corda::i18n
