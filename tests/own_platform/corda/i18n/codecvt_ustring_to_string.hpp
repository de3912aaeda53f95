// Converts to any encoding that iconv knows.
#pragma once

#include <memory>
#include <string>

namespace corda::i18n {

class codecvt_ustring_to_string
{
public:
    codecvt_ustring_to_string(const std::string& encoding, bool replaceUnpaired);
    std::string do_convert(const char16_t* text, unsigned long length) const;

private:
    std::shared_ptr<void> conversion;
    bool replaceUnpaired;
};

} // namespace corda::i18n
