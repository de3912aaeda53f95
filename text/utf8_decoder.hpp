// The kernels that check UTF-8 and turn it into UTF-16: one interface, one file for each level of
// processors.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarn::text {

/// How far a decoder got.
struct DecodedUtf8
{
    const char* read;  ///< The first byte that was not decoded.
    char16_t* written; ///< One past the last code unit that belongs to the result.
};

/// Characters that a document in XML 1.0 cannot have in each place as they are, as bits.
enum CharacterClasses : std::uint8_t
{
    NO_CLASSES = 0,
    FORBIDDEN = 1, ///< Below U+0020, without the next three, and U+FFFE and U+FFFF.
    TAB_OR_LINE_FEED = 2,
    CARRIAGE_RETURN = 4,
    MARKUP = 8, ///< The characters < > & " '
};

/// How much is well-formed, and of which classes there are characters in that.
struct ClassifiedUtf8
{
    const char* read; ///< The first byte that is not part of it.
    CharacterClasses classes;
};

/// The most code units that a decoder writes for @p length bytes.
constexpr std::size_t decodedUtf8Bound(std::size_t length)
{
    // A step of a vector kernel writes more than it keeps: at most its 64 units.
    constexpr std::size_t STORE_OVERRUN = 64;
    return length + STORE_OVERRUN;
}

/// Decodes the bytes from @p first to @p last and stops at the end or before the first ill-formed
/// sequence: an overlong form, a surrogate, a code point above U+10FFFF, a continuation byte
/// without a lead byte, or a character without all its bytes. @p out must have room for
/// `decodedUtf8Bound(last - first)` code units.
DecodedUtf8 decodeUtf8(const char* first, const char* last, char16_t* out);

/// Reads what decodeUtf8() would decode, and tells the classes.
ClassifiedUtf8 classifyUtf8(const char* first, const char* last);

/// The decoders for one level of processors. Both are null if this processor is below the level.
struct Utf8DecoderLevel
{
    std::string_view name;
    DecodedUtf8 (*decode)(const char* first, const char* last, char16_t* out);
    ClassifiedUtf8 (*classify)(const char* first, const char* last);
};

/// All levels, the best first. The last one, "portable", runs on every processor: it decodes one
/// code point at a time. decodeUtf8() and classifyUtf8() use the first that this processor can run.
std::array<Utf8DecoderLevel, 4> utf8DecoderLevels();

Utf8DecoderLevel utf8DecoderForAvx512();
Utf8DecoderLevel utf8DecoderForAvx2();
Utf8DecoderLevel utf8DecoderForSsse3();
Utf8DecoderLevel portableUtf8Decoder();

} // namespace tarn::text
