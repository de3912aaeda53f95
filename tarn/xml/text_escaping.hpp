// The kernels behind the escaping of character data.
//
// A special code unit is one that character data cannot hold as it is:
// - the five characters of markup: `<`, `>`, `&`, `"` and `'`;
// - the control characters U+0001 to U+001F, except tab, line feed and carriage return.
// U+0000 is not special.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarn::utils::detail {

/// The entity reference for the special code unit @p special; empty if that is a control character.
std::u16string_view entityReference(char16_t special);

/// Returns a pointer to the first special code unit from @p first on, or @p last if there is none.
const char16_t* findSpecial(const char16_t* first, const char16_t* last);

/// How far an escaping copy got.
struct EscapedRun
{
    const char16_t* read; ///< The first code unit that was not copied.
    char16_t* written;    ///< One past the last code unit that belongs to the copy.
};

/// In UTF-16 code units: an escaping copy stops only with less room than this.
inline constexpr std::size_t ESCAPING_MARGIN = 128;

/// Copies text to @p out with the five markup characters replaced by entity references.
///
/// Stops at @p last, before a control character that is special, or with less than ESCAPING_MARGIN
/// code units left before @p outLast. Writes nothing at or after @p outLast, but may write beyond
/// the copy's end.
EscapedRun escapeMarkup(const char16_t* first, const char16_t* last, char16_t* out,
                        const char16_t* outLast);

} // namespace tarn::utils::detail
