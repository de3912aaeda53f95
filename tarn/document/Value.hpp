// Text that XML 1.0 can hold, in UTF-8.
#pragma once

#include "tarn/document/Document.hpp"
#include "text/plain_ascii.hpp"
#include "text/utf8_decoder.hpp"

#include <string>
#include <string_view>

namespace tarn::document::detail {

/// A checked text. Where nothing had to be converted or replaced it is a view of the caller's.
class Value
{
public:
    /// The longest text that putIfPlain() takes, in bytes.
    static constexpr std::size_t SHORT = text::LONGEST_COPY;

    /// Copies a short text to @p out, where there is room for SHORT bytes, if it needs no check but
    /// whether it is plain.
    /// @returns the place after it, or null.
    static char* putIfPlain(char* out, const Text& text)
    {
        const std::string_view bytes = text.utf8();
        return text.textKind() == Text::Kind::Utf8 && bytes.size() <= SHORT
                   ? text::copyIfPlainAscii(bytes.data(), bytes.size(), out)
                   : nullptr;
    }

    /// @throws Refusal if @p text has what XML 1.0 cannot hold, unless that is to be replaced.
    void assign(const Text& text, Unrepresentable unrepresentable);

    std::string_view bytes() const { return view; }

    /// Whether it has characters of @p some CharacterClasses.
    bool has(unsigned some) const { return (classes & some) != 0; }

private:
    /// Makes `converted` of @p text.
    void convert(std::u16string_view text, Unrepresentable unrepresentable);
    /// Makes `replaced` of @p text.
    void replace(std::string_view text);

    std::string_view view;
    text::CharacterClasses classes = text::NO_CLASSES;
    std::string converted;
    std::string replaced;
};

} // namespace tarn::document::detail
