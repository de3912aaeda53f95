// The writer as what escapes the layer's values.
#pragma once

#include "tarn/document/Value.hpp"
#include "tarn/xml/XmlWriter.hpp"
#include "text/utf8_encoder.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tarn::document::detail {

/// White space that is written as references, because no parser would give it back.
struct Referenced
{
    unsigned classes; ///< As CharacterClasses.
    std::u16string_view units;
};
inline constexpr Referenced IN_TEXT{text::CARRIAGE_RETURN, u"\r"};
inline constexpr Referenced IN_ATTRIBUTES{text::CARRIAGE_RETURN | text::TAB_OR_LINE_FEED,
                                          u"\t\n\r"};

class Escaper
{
public:
    /// Writes @p text, which is well-formed, to an Output or to Bytes, with markup escaped and the
    /// code units in @p referenced as references.
    template <class Out>
    void write(std::string_view text, std::u16string_view referenced, Out& out)
    {
        for (std::string_view rest = text;;) {
            const std::size_t plain = lengthBeforeSpecial(rest);
            out.write(rest.substr(0, plain));
            rest.remove_prefix(plain);
            if (rest.empty()) {
                return;
            }
            const std::size_t length = lengthOfCharacters(rest, PORTION);
            const std::u16string& markup = escape(rest.substr(0, length), referenced);
            char* const end = out.room(text::encodedUtf8Bound(markup.size()));
            out.endAt(text::encodeUtf8(markup.data(), markup.data() + markup.size(), end).written);
            rest.remove_prefix(length);
        }
    }

private:
    static constexpr std::size_t PORTION = 2048; ///< In bytes, at most.

    /// How many bytes at the beginning of @p text are neither markup nor white space other than
    /// blanks.
    static std::size_t lengthBeforeSpecial(std::string_view text);
    /// How many bytes at the beginning of @p text are whole characters, at most @p longest.
    static std::size_t lengthOfCharacters(std::string_view text, std::size_t longest);
    /// @returns @p value as markup, which stays until the next call.
    const std::u16string& escape(std::string_view value, std::u16string_view referenced);

    // Kept to reuse their storage.
    std::u16string units;
    std::u16string piece;
    std::u16string markup;
    /// Writes to `markup`. Made when it is needed, because it is large.
    std::optional<utils::XmlWriter> writer;
};

} // namespace tarn::document::detail
