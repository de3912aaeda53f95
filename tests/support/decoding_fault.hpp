// The UTF-8 decoders on one text.
#pragma once

#include "support/difference.hpp"
#include "support/GuardedText.hpp"
#include "support/reference_utf8.hpp"

#include <text/utf8_decoder.hpp>

#include <algorithm>
#include <string>
#include <string_view>

namespace tarn::tests {

namespace detail {

/// What decoders have to make of a text.
struct DecodedText
{
    std::u16string units;
    std::size_t read = 0; ///< The bytes before the first ill-formed sequence.
    unsigned classes = text::NO_CLASSES;

    bool operator==(const DecodedText&) const = default;
};

inline unsigned classOf(char32_t codePoint)
{
    const auto isIn = [codePoint](std::u32string_view characters) {
        return characters.find(codePoint) != std::u32string_view::npos;
    };
    return isIn(U"\t\n")                               ? text::TAB_OR_LINE_FEED
           : isIn(U"\r")                               ? text::CARRIAGE_RETURN
           : codePoint < U' ' || isIn(U"\uFFFE\uFFFF") ? text::FORBIDDEN
           : isIn(U"<>&\"'")                           ? text::MARKUP
                                                       : text::NO_CLASSES;
}

/// Decodes up to the first bytes that referenceUtf8() does not make of any character.
inline DecodedText referenceUtf16(std::string_view bytes)
{
    DecodedText decoded;
    while (decoded.read < bytes.size()) {
        const auto lead = static_cast<unsigned char>(bytes[decoded.read]);
        const unsigned length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        const std::string_view sequence = bytes.substr(decoded.read, length);
        char32_t codePoint = length == 1 ? lead : lead & 0x7Fu >> length;
        for (const char byte : sequence.substr(1)) {
            codePoint = codePoint << 6 | (byte & 0x3F);
        }
        std::u16string units = {static_cast<char16_t>(codePoint)};
        if (codePoint >= 0x10000) {
            units = {static_cast<char16_t>(0xD800 + (codePoint - 0x10000) / 0x400),
                     static_cast<char16_t>(0xDC00 + codePoint % 0x400)};
        }
        if (referenceUtf8(units) != sequence) {
            break;
        }
        decoded.units += units;
        decoded.read += length;
        decoded.classes |= classOf(codePoint);
    }
    return decoded;
}

inline std::string inHexadecimal(std::string_view bytes)
{
    static constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string shown;
    for (const char byte : bytes) {
        shown += {DIGITS[static_cast<unsigned char>(byte) >> 4], DIGITS[byte & 0xF], ' '};
    }
    return shown;
}

/// Decodes the bytes from @p first to @p last in both ways, to room with exactly the bound.
inline std::string faultOfDecoding(const char* first, const char* last, const DecodedText& expected,
                                   const text::Utf8DecoderLevel& level)
{
    static GuardedText room(std::u16string(0x2000, u'\0'));
    char16_t* const out =
        room.end() - text::decodedUtf8Bound(static_cast<std::size_t>(last - first));
    std::fill(out, room.end(), u'?'); // nothing is left of what another decoder wrote
    const text::DecodedUtf8 decoded = level.decode(first, last, out);
    const text::ClassifiedUtf8 classified = level.classify(first, last);
    const DecodedText result = {
        {out, decoded.written}, static_cast<std::size_t>(decoded.read - first), classified.classes};
    if (result == expected && classified.read == decoded.read) {
        return "";
    }
    return std::string(level.name) + " decodes " + std::to_string(result.read) +
           " bytes and classifies " + std::to_string(classified.read - first) + ", not " +
           std::to_string(expected.read) + ", and finds the classes " +
           std::to_string(result.classes) + ", not " + std::to_string(expected.classes) +
           "\n  of " + inHexadecimal({first, last}) + '\n' +
           difference(result.units, expected.units);
}

} // namespace detail

/// Decodes @p bytes, at most a page, directly before and directly after a page that cannot be
/// touched, with the decoders of each level that this processor can run.
/// @returns the level and what it does wrong; nothing if all is right.
inline std::string faultOfDecoding(std::string_view bytes)
{
    static GuardedText beforeGuard(std::u16string(0x800, u'\0'), GuardedText::Guard::After);
    static GuardedText afterGuard(std::u16string(0x800, u'\0'), GuardedText::Guard::Before);
    const detail::DecodedText expected = detail::referenceUtf16(bytes);
    const auto size = static_cast<std::ptrdiff_t>(bytes.size());
    for (char* const first : {reinterpret_cast<char*>(beforeGuard.end()) - size,
                              reinterpret_cast<char*>(afterGuard.begin())}) {
        std::ranges::copy(bytes, first);
        for (const text::Utf8DecoderLevel& level : text::utf8DecoderLevels()) {
            if (level.decode == nullptr) {
                continue; // this processor cannot run it
            }
            std::string fault = detail::faultOfDecoding(first, first + size, expected, level);
            if (!fault.empty()) {
                return fault;
            }
        }
    }
    return "";
}

} // namespace tarn::tests
