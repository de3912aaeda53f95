// Markup that is made once and written often.
#pragma once

#include "tarn/document/Text.hpp"

#include <string>
#include <string_view>

namespace tarn::document {

/// Content of an element, ready to be written by Element::raw().
///
/// @see @ref fragments
class TARN_EXPORT Fragment
{
public:
    /// @p text, escaped. Nothing is left to be checked when it is written.
    ///
    /// @throws Error if @p text is no well-formed UTF, has characters that XML 1.0 does not have,
    /// or is a null pointer, whatever the Options of the document are. Its path is `/`.
    static Fragment of(const Text& text);

    /// @p markup as it is, which must be well-formed content of an element whose prefixes are
    /// declared where it is written, in UTF-8. Only its characters are checked; the rest is
    /// trusted.
    ///
    /// @throws Error as of().
    static Fragment trusted(std::string_view markup);

private:
    friend class Element;

    explicit Fragment(std::string&& markup) : markup(std::move(markup)) {}

    std::string markup;
};

} // namespace tarn::document
