// Stand-in for the application's encoding converter: an adapter over the kernels in text/.
#pragma once

#include <string>

namespace corda::i18n {

/// Converts runs of UTF-16 code units to a byte encoding. This stand-in knows only UTF-8.
class codecvt_ustring_to_string
{
public:
    /// @param encoding the name of the byte encoding: "UTF-8", in capital or small letters.
    /// @param replaceUnpaired what becomes of a surrogate without its other half: U+FFFD if true,
    /// an
    ///     exception from `do_convert` if false.
    /// @throws std::invalid_argument that names @p encoding if it is anything but UTF-8.
    codecvt_ustring_to_string(const std::string& encoding, bool replaceUnpaired);

    /// Converts the @p length code units at @p text. Each call is independent: a surrogate at the
    /// end of one run is not joined with one at the start of the next.
    ///
    /// @return the bytes in UTF-8.
    /// @throws std::range_error that gives the index of the first unpaired surrogate, if those are
    ///     not replaced.
    std::string do_convert(const char16_t* text, unsigned long length) const;

private:
    bool replaceUnpaired;
};

} // namespace corda::i18n
