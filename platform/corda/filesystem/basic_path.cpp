#include "corda/filesystem/basic_path.hpp"

#include "corda/i18n/codecvt_ustring_to_string.hpp"

#include <stdexcept>

namespace corda::filesystem::detail {

namespace {

[[noreturn]] void refuse(const std::u16string& text, const std::string& problem)
{
    const i18n::codecvt_ustring_to_string replacing("UTF-8", true);
    // Shown up to a NUL at most, which would hide the rest of the message.
    const std::size_t shown = std::min(text.find(u'\0'), text.size());
    throw std::runtime_error('"' + replacing.do_convert(text.data(), shown) +
                             "\" cannot be a path: " + problem);
}

} // namespace

std::string path_traits<char, char16_t>::to_native(const std::u16string& text)
{
    if (const std::size_t nul = text.find(u'\0'); nul != std::u16string::npos) {
        refuse(text, "NUL at index " + std::to_string(nul));
    }
    try {
        return i18n::codecvt_ustring_to_string("UTF-8", false).do_convert(text.data(), text.size());
    } catch (const std::range_error& error) {
        refuse(text, error.what());
    }
}

} // namespace corda::filesystem::detail
