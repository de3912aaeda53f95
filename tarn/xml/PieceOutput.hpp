// How the writer's operations hand their pieces to the sink.
//
// A piece goes to the sink as one `write`. The library's own sinks only append it to a string. So
// while a group of pieces fits into that string without filling a batch or allocating, it is
// appended there in place, which gives the same text without a virtual call for each piece.
#pragma once

#include "tarn/xml/copy_units.hpp"
#include "tarn/xml/Sink.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace tarn::utils::detail {

/// A piece of @p length spaces.
struct Spaces
{
    std::size_t length;
};

/// A piece made of a prefix, a colon and a local name; or of either alone if the other is empty.
struct QualifiedName
{
    const std::u16string& prefix;
    const std::u16string& localName;

    bool hasColon() const { return !prefix.empty() && !localName.empty(); }
    std::size_t length() const { return prefix.size() + (hasColon() ? 1 : 0) + localName.size(); }
    char16_t* copyTo(char16_t* out) const noexcept
    {
        out = copyUnits(prefix, out);
        if (hasColon()) {
            *out++ = u':';
        }
        return copyUnits(localName, out);
    }

    void assignTo(std::u16string& text) const;
};

/// The sink as the writer's operations see it.
class PieceOutput
{
public:
    explicit PieceOutput(Sink& sink);

    /// Hands over each of @p pieces, in order: a `std::u16string`, a `std::u16string_view`,
    /// `Spaces` or a `QualifiedName`.
    template <class... Pieces>
    void write(const Pieces&... pieces)
    {
        const bool inPlace =
            compose((lengthOf(pieces) + ...), [&](char16_t* out, char16_t*) noexcept {
                ((out = copy(pieces, out)), ...);
                return out;
            });
        if (!inPlace) [[unlikely]] {
            (writePiece(pieces), ...);
        }
    }

    /// If the sink can take @p atLeast code units in place, calls @p composeText with the beginning
    /// and the end of all the room there is, takes the text from there to the pointer that it
    /// returns, and returns true. @p composeText must not throw: it runs while the string is being
    /// resized.
    template <class ComposeText>
    bool compose(std::size_t atLeast, ComposeText&& composeText)
    {
        static_assert(std::is_nothrow_invocable_r_v<char16_t*, ComposeText, char16_t*, char16_t*>);
        if (text == nullptr) {
            return false;
        }
        const std::size_t used = text->size();
        const std::size_t end = std::min(text->capacity(), limit);
        if (used > end || end - used < atLeast) {
            return false;
        }
        text->resize_and_overwrite(end, [&](char16_t* units, std::size_t) noexcept {
            return static_cast<std::size_t>(composeText(units + used, units + end) - units);
        });
        return true;
    }

    /// Whether @p argument is the string that the sink appends to.
    bool appendsTo(const std::u16string& argument) const { return &argument == text; }

private:
    static std::size_t lengthOf(std::u16string_view piece) { return piece.size(); }
    static std::size_t lengthOf(Spaces piece) { return piece.length; }
    static std::size_t lengthOf(QualifiedName piece) { return piece.length(); }

    static char16_t* copy(std::u16string_view piece, char16_t* out) noexcept
    {
        return copyUnits(piece, out);
    }
    static char16_t* copy(Spaces piece, char16_t* out) noexcept
    {
        return std::fill_n(out, piece.length, u' ');
    }
    static char16_t* copy(QualifiedName piece, char16_t* out) noexcept { return piece.copyTo(out); }

    void writePiece(const std::u16string& piece);
    void writePiece(std::u16string_view piece);
    void writePiece(Spaces piece);
    void writePiece(QualifiedName piece);

    Sink& sink;
    /// The string that the sink appends to, or null for a sink that this class does not know.
    std::u16string* text = nullptr;
    /// The size that `text` may reach before the sink has more to do than to append.
    std::size_t limit = 0;
    /// Holds a piece that is not a `std::u16string` of its own while the sink takes it.
    std::u16string scratch;
};

} // namespace tarn::utils::detail
