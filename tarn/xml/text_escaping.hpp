// The kernels behind the escaping of character data.
//
// A special code unit is one that character data cannot hold as it is:
// - the five characters of markup: `<`, `>`, `&`, `"` and `'`;
// - the control characters U+0001 to U+001F, except tab, line feed and carriage return.
// U+0000 is not special.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace tarn::utils::detail {

/// What stands in the place of a special code unit, padded to the width of the vector that it is
/// copied with.
struct Replacement
{
    char16_t units[7];
    char16_t length;

    constexpr std::u16string_view text() const { return {units, length}; }
};

/// In UTF-16 code units.
inline constexpr std::size_t LONGEST_REPLACEMENT = 6;

/// By special code unit; all are in the table.
using Replacements = std::array<Replacement, 64>;

/// Control characters become decimal character references.
extern const Replacements REPLACEMENTS;
/// Control characters, which XML 1.0 cannot represent, are left out; a vertical tab becomes a
/// space.
extern const Replacements REPLACEMENTS_OF_XML_1_0;

/// Whether the special code unit @p special is a control character.
constexpr bool isControl(char16_t special)
{
    return special < u' ';
}

/// Returns a pointer to the first special code unit from @p first on, or @p last if there is none.
const char16_t* findSpecial(const char16_t* first, const char16_t* last);

/// How far an escaping copy got.
struct EscapedRun
{
    const char16_t* read; ///< The first code unit that was not copied.
    char16_t* written;    ///< One past the last code unit that belongs to the copy.
};

/// In UTF-16 code units: an escaping copy stops only with less room than this. It is enough for
/// ESCAPING_STEP code units.
inline constexpr std::size_t ESCAPING_MARGIN = 128;
inline constexpr std::size_t ESCAPING_STEP = 16;

/// Copies text to @p out with its special code units replaced.
///
/// Stops at @p last, or with less than ESCAPING_MARGIN code units left before @p outLast. Writes
/// nothing at or after @p outLast, but may write beyond the copy's end.
EscapedRun escape(const char16_t* first, const char16_t* last, char16_t* out,
                  const char16_t* outLast, const Replacements& replacements);

using Escaper = EscapedRun (*)(const char16_t* first, const char16_t* last, char16_t* out,
                               const char16_t* outLast, const Replacements& replacements);

/// A kernel for one level of processors, which does what escape() does.
struct EscaperLevel
{
    std::string_view name;
    Escaper escape; ///< Null if this processor is below the level.
};

/// All levels, the best first; every processor can run the last. escape() uses the first that this
/// processor can run.
std::array<EscaperLevel, 2> escaperLevels();

/// The kernel of that level, or null.
Escaper escaperForAvx2();

} // namespace tarn::utils::detail
