#include "tools/xml2json/StringEscaper.hpp"

#include "text/plain_ascii.hpp"
#include "text/utf16.hpp"
#include "tools/common/json_escapes.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace xml2json {

using namespace tarn::tools;

namespace {

/// In UTF-8 the characters from U+0080 to U+009F are this byte and that of their number.
constexpr unsigned char LEAD_OF_CONTROLS = 0xC2;

constexpr bool isControlAfterLead(unsigned char byte)
{
    return byte < 0xA0;
}

/// For each byte, whether it may have to be escaped.
constexpr std::array<bool, 256> SPECIAL = [] {
    std::array<bool, 256> special{};
    std::fill_n(special.begin(), ' ', true);
    for (const unsigned char byte : {'"', '/', '\\', '\x7F'}) {
        special[byte] = true;
    }
    special[LEAD_OF_CONTROLS] = true;
    return special;
}();

bool isSpecial(char byte)
{
    return SPECIAL[static_cast<unsigned char>(byte)];
}

constexpr std::size_t STEP = sizeof(__m128i);

/// A bit for each of the bytes that may have to be escaped.
unsigned specialsIn(__m128i bytes)
{
    const auto is = [bytes](char byte) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte)); };
    const __m128i isControl = tarn::text::isControl(bytes);
    const __m128i isQuoted = _mm_or_si128(_mm_or_si128(is('"'), is('/')), is('\\'));
    const __m128i isOther = _mm_or_si128(is('\x7F'), is(static_cast<char>(LEAD_OF_CONTROLS)));
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(isControl, isQuoted), isOther)));
}

/// The number of bytes before the first one that may have to be escaped. Loads overlap where the
/// size is no multiple of theirs.
std::size_t plainSize(std::string_view text)
{
    const char* const first = text.data();
    const std::size_t size = text.size();
    if (size >= STEP) {
        for (std::size_t place = 0; place < size; place += STEP) {
            place = std::min(place, size - STEP);
            const auto* const step = reinterpret_cast<const __m128i*>(first + place);
            if (const unsigned specials = specialsIn(_mm_loadu_si128(step)); specials != 0) {
                return place + static_cast<std::size_t>(std::countr_zero(specials));
            }
        }
        return size;
    }
    if (size >= 8) {
        const auto load = [first](std::size_t place) {
            std::int64_t bytes = 0;
            std::memcpy(&bytes, first + place, sizeof(bytes));
            return bytes;
        };
        if (specialsIn(_mm_set_epi64x(load(0), load(size - 8))) == 0) {
            return size;
        }
    }
    return static_cast<std::size_t>(std::ranges::find_if(text, isSpecial) - text.begin());
}

bool isHexadecimalDigit(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F') ||
           (byte >= 'a' && byte <= 'f');
}

/// Appends @p codePoint, which can be a surrogate, in the form of UTF-8.
void appendCodePoint(std::string& text, std::uint32_t codePoint)
{
    const auto append = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (codePoint < 0x80) {
        append(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        append(0xC0 | codePoint >> 6);
    } else {
        if (codePoint < 0x10000) {
            append(0xE0 | codePoint >> 12);
        } else {
            append(0xF0 | codePoint >> 18);
            append(0x80 | (codePoint >> 12 & 0x3F));
        }
        append(0x80 | (codePoint >> 6 & 0x3F));
    }
    append(0x80 | (codePoint & 0x3F));
}

/// Appends what the escape sequence at the beginning of @p text stands for. Returns its length, or
/// 0 if it is invalid.
std::size_t appendUnescaped(std::string& result, std::string_view text)
{
    if (const std::optional<char> character = escapedCharacter(text.size() > 1 ? text[1] : '\0')) {
        result += *character;
        return SHORT_ESCAPE_SIZE;
    }
    const std::optional<char16_t> unit = escapedCodeUnit(text);
    if (!unit) {
        return 0;
    }
    const char16_t next = escapedCodeUnit(text.substr(UNICODE_ESCAPE_SIZE)).value_or(0);
    if (tarn::text::isHighSurrogate(*unit) && tarn::text::isLowSurrogate(next)) {
        appendCodePoint(result, 0x10000 + ((*unit & 0x3FFu) << 10 | (next & 0x3FFu)));
        return 2 * UNICODE_ESCAPE_SIZE;
    }
    appendCodePoint(result, *unit);
    return UNICODE_ESCAPE_SIZE;
}

} // namespace

void StringEscaper::start(bool isEscaped)
{
    this->isEscaped = isEscaped;
    escape.clear();
    writer.startString();
}

bool StringEscaper::add(std::string_view piece)
{
    while (!piece.empty()) {
        if (!escape.empty()) {
            if (!continueEscape(piece.front())) {
                return false;
            }
            piece.remove_prefix(1);
            continue;
        }
        const std::size_t plain = plainSize(piece);
        writer.stringText(piece.substr(0, plain));
        piece.remove_prefix(plain);
        if (piece.empty()) {
            break;
        }
        auto byte = static_cast<unsigned char>(piece.front());
        piece.remove_prefix(1);
        if (byte == LEAD_OF_CONTROLS && !piece.empty()) {
            byte = static_cast<unsigned char>(piece.front());
            piece.remove_prefix(1);
            if (!isControlAfterLead(byte)) {
                const char character[] = {static_cast<char>(LEAD_OF_CONTROLS),
                                          static_cast<char>(byte)};
                writer.stringText({character, std::size(character)});
                continue;
            }
        }
        if (isEscaped && byte == '\\') {
            escape = '\\';
        } else {
            writeEscaped(byte);
        }
    }
    return true;
}

bool StringEscaper::end()
{
    writer.endString();
    return escape.empty();
}

/// Takes the next byte of an escape sequence. Returns false if that makes it invalid.
bool StringEscaper::continueEscape(char byte)
{
    const bool isLetter = escape.size() == 1;
    if (isLetter ? byte != 'u' && !escapedCharacter(byte) : !isHexadecimalDigit(byte)) {
        return false;
    }
    escape += byte;
    if ((isLetter && byte != 'u') || escape.size() == UNICODE_ESCAPE_SIZE) {
        writer.stringText(escape);
        escape.clear();
    }
    return true;
}

void StringEscaper::writeEscaped(unsigned char character)
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    if (const std::optional<char> letter = escapeLetter(character)) {
        const char sequence[] = {'\\', *letter};
        writer.stringText({sequence, std::size(sequence)});
    } else {
        const char sequence[] = {
            '\\', 'u', '0', '0', DIGITS[character >> 4], DIGITS[character & 0xF]};
        writer.stringText({sequence, std::size(sequence)});
    }
}

std::optional<std::string> unescape(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t plain = std::min(text.find('\\'), text.size());
        result += text.substr(0, plain);
        text.remove_prefix(plain);
        if (!text.empty()) {
            const std::size_t size = appendUnescaped(result, text);
            if (size == 0) {
                return std::nullopt;
            }
            text.remove_prefix(size);
        }
    }
    return result;
}

} // namespace xml2json
