// The kinds of text that the writer's operations put together. Each kind has two functions:
// `mostUnits` says how many code units it can have, `copyPiece` copies it, inline, to a place with
// room for that many, and returns the end of the copy.
#pragma once

#include "tarn/xml/copy_if_plain.hpp"
#include "tarn/xml/copy_units.hpp"
#include "tarn/xml/text_escaping.hpp"

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace tarn::utils::detail {

/// Ends a tag that is not that of an empty element.
inline constexpr std::u16string_view TAG_END = u">";

inline std::size_t mostUnits(std::u16string_view text)
{
    return text.size();
}

inline char16_t* copyPiece(std::u16string_view text, char16_t* out) noexcept
{
    return copyUnits(text, out);
}

/// So many spaces.
struct Spaces
{
    std::size_t count;
};

inline std::size_t mostUnits(Spaces spaces)
{
    return spaces.count;
}

inline char16_t* copyPiece(Spaces spaces, char16_t* out) noexcept
{
    return fillWithSpaces(spaces.count, out);
}

/// A prefix, a colon and a local name; or either alone if the other is empty.
struct QualifiedName
{
    const std::u16string& prefix;
    const std::u16string& localName;

    bool hasColon() const { return !prefix.empty() && !localName.empty(); }
};

inline std::size_t mostUnits(QualifiedName name)
{
    return name.prefix.size() + (name.hasColon() ? 1 : 0) + name.localName.size();
}

inline char16_t* copyPiece(QualifiedName name, char16_t* out) noexcept
{
    if (!name.prefix.empty()) {
        out = copyUnits(name.prefix, out);
        if (name.hasColon()) {
            *out++ = u':';
        }
    }
    return copyUnits(name.localName, out);
}

/// A value with its special code units replaced.
struct EscapedValue
{
    const std::u16string& value;
    const Replacements& replacements;
};

/// Long values are not worth so much room, and pass in parts.
inline std::size_t mostUnits(const EscapedValue& escaped)
{
    return escaped.value.size() <= LONGEST_SHORT_VALUE
               ? LONGEST_REPLACEMENT * escaped.value.size() + ESCAPING_MARGIN
               : std::numeric_limits<std::size_t>::max() / 2; // a sum must not overflow
}

inline char16_t* copyPiece(const EscapedValue& escaped, char16_t* out) noexcept
{
    const std::u16string_view value = escaped.value;
    char16_t* const end = copyIfPlain(value, out);
    return end != nullptr ? end
                          : escape(value.begin(), value.end(), out, out + mostUnits(escaped),
                                   escaped.replacements)
                                .written;
}

/// Appends @p piece, which is no escaped value, to @p text.
template <class Piece>
void appendPiece(const Piece& piece, std::u16string& text)
{
    const std::size_t used = text.size();
    const std::size_t length = used + mostUnits(piece);
    text.resize_and_overwrite(length, [&](char16_t* units, std::size_t) noexcept {
        copyPiece(piece, units + used);
        return length;
    });
}

inline void appendPiece(std::u16string_view piece, std::u16string& text)
{
    text.append(piece);
}

/// Whether a string holds @p name without an allocation.
inline bool isShort(QualifiedName name)
{
    return mostUnits(name) <= std::u16string().capacity();
}

/// As appendPiece(), inline, for a short name and an empty @p text.
inline void assignShortName(QualifiedName name, std::u16string& text)
{
    const std::size_t length = mostUnits(name);
    text.resize_and_overwrite(length, [&](char16_t* out, std::size_t) noexcept {
        if (!name.prefix.empty()) {
            copyShort(name.prefix.data(), name.prefix.size(), out);
            out += name.prefix.size();
            if (name.hasColon()) {
                *out++ = u':';
            }
        }
        copyShort(name.localName.data(), name.localName.size(), out);
        return length;
    });
}

} // namespace tarn::utils::detail
