#include "corda/filesystem/detail/make_native_form.hpp"
#include "corda/i18n/codecvt_ustring_to_string.hpp"
#include "halyard/cppmicroservices/install.hpp"

#include "support/reference_utf8.hpp"

std::string corda::i18n::codecvt_ustring_to_string::do_convert(const char16_t* text,
                                                               unsigned long length) const
{
    return tarn::tests::referenceUtf8({text, length});
}

std::u16string corda::filesystem::detail::make_native_form(const std::u16string& path,
                                                           bool normalise)
{
    return (normalise ? u"normalised " : u"as it is ") + path;
}

std::vector<cppmicroservices::Bundle> halyard::cppmicroservices::install(
    corda::filesystem::basic_path<char, char16_t,
                                  corda::filesystem::detail::path_traits<char, char16_t>>
        path)
{
    return {{1, path.text}, {2, path.text}};
}
