#include "corda/filesystem/detail/make_native_form.hpp"
#include "corda/i18n/codecvt_ustring_to_string.hpp"
#include "halyard/cppmicroservices/install.hpp"

#include <cerrno>
#include <iconv.h>
#include <stdexcept>

namespace corda {

namespace i18n {

codecvt_ustring_to_string::codecvt_ustring_to_string(const std::string& encoding,
                                                     bool replaceUnpaired)
    : conversion(iconv_open(encoding.c_str(), "UTF-16LE"), iconv_close),
      replaceUnpaired(replaceUnpaired)
{
    if (conversion.get() == iconv_t(-1)) {
        throw std::invalid_argument(encoding);
    }
}

std::string codecvt_ustring_to_string::do_convert(const char16_t* text, unsigned long length) const
{
    char16_t replacement = 0xFFFD;
    char* in = reinterpret_cast<char*>(const_cast<char16_t*>(text));
    std::size_t bytesIn = length * sizeof(char16_t);
    std::string bytes(4 * length, '\0');
    char* out = bytes.data();
    std::size_t room = bytes.size();
    while (iconv(conversion.get(), &in, &bytesIn, &out, &room) == std::size_t(-1)) {
        if (!replaceUnpaired || (errno != EILSEQ && errno != EINVAL)) {
            throw std::range_error("cannot be converted");
        }
        char* other = reinterpret_cast<char*>(&replacement);
        std::size_t otherSize = sizeof replacement;
        iconv(conversion.get(), nullptr, nullptr, nullptr, nullptr);
        iconv(conversion.get(), &other, &otherSize, &out, &room);
        in += sizeof(char16_t);
        bytesIn -= sizeof(char16_t);
    }
    bytes.resize(bytes.size() - room);
    return bytes;
}

} // namespace i18n

std::u16string filesystem::detail::make_native_form(const std::u16string& path, bool normalise)
{
    return (normalise ? u"normalised " : u"as it is ") + path;
}

} // namespace corda

std::vector<cppmicroservices::Bundle> halyard::cppmicroservices::install(
    corda::filesystem::basic_path<char, char16_t,
                                  corda::filesystem::detail::path_traits<char, char16_t>>
        path)
{
    return {{1, path.text}, {2, path.text}};
}
