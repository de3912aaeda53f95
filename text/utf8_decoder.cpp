#include "text/utf8_decoder.hpp"

#include "text/utf16.hpp"
#include "text/utf8_decoder_steps.hpp"

#include <algorithm>

namespace tarn::text {

namespace {

const Utf8DecoderLevel& bestLevel()
{
    static const Utf8DecoderLevel best = [] {
        const auto levels = utf8DecoderLevels();
        return *std::ranges::find_if(
            levels, [](auto decode) { return decode != nullptr; }, &Utf8DecoderLevel::decode);
    }();
    return best;
}

constexpr auto CLASSES_OF_ASCII = [] {
    std::array<CharacterClasses, 0x80> classes{};
    for (unsigned byte = 0; byte < classes.size(); ++byte) {
        classes[byte] = classOfAscii(byte);
    }
    return classes;
}();

/// A code point and how many bytes it has; none if they are ill-formed.
struct LongCharacter
{
    char32_t codePoint = 0;
    std::ptrdiff_t length = 0;
};

/// Reads what begins with a byte that is not ASCII.
inline LongCharacter readLongCharacter(const char* first, const char* last)
{
    const auto lead = static_cast<unsigned char>(*first);
    const std::ptrdiff_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (lead < 0xC2 || last - first < length || !isContinuation(first[1])) {
        return {};
    }
    const auto bitsAt = [first](std::ptrdiff_t place) -> char32_t { return first[place] & 0x3F; };
    if (length == 2) {
        return {(lead & 0x1Fu) << 6 | bitsAt(1), 2};
    }
    if (!isContinuation(first[2])) {
        return {};
    }
    if (length == 3) {
        const char32_t codePoint = (lead & 0xFu) << 12 | bitsAt(1) << 6 | bitsAt(2);
        const bool isWellFormed =
            codePoint >= 0x800 && !isSurrogate(static_cast<char16_t>(codePoint));
        return isWellFormed ? LongCharacter{codePoint, 3} : LongCharacter{};
    }
    const char32_t codePoint = (lead - 0xF0u) << 18 | bitsAt(1) << 12 | bitsAt(2) << 6 | bitsAt(3);
    const bool isWellFormed =
        isContinuation(first[3]) && codePoint >= 0x10000 && codePoint <= 0x10FFFF;
    return isWellFormed ? LongCharacter{codePoint, 4} : LongCharacter{};
}

DecodedUtf8 decodePlain(const char* first, const char* last, char16_t* out)
{
    while (first != last) {
        const auto byte = static_cast<unsigned char>(*first);
        if (byte < 0x80) {
            *out++ = byte;
            ++first;
            continue;
        }
        const auto [codePoint, length] = readLongCharacter(first, last);
        if (length == 0) {
            break;
        }
        first += length;
        if (codePoint < 0x10000) {
            *out++ = static_cast<char16_t>(codePoint);
        } else {
            *out++ = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
            *out++ = static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
        }
    }
    return {first, out};
}

ClassifiedUtf8 classifyPlain(const char* first, const char* last)
{
    unsigned classes = NO_CLASSES;
    while (first != last) {
        const auto byte = static_cast<unsigned char>(*first);
        if (byte < 0x80) {
            classes |= CLASSES_OF_ASCII[byte];
            ++first;
            continue;
        }
        const auto [codePoint, length] = readLongCharacter(first, last);
        if (length == 0) {
            break;
        }
        first += length;
        if (codePoint == 0xFFFE || codePoint == 0xFFFF) {
            classes |= FORBIDDEN;
        }
    }
    return {first, classesOf(classes)};
}

} // namespace

DecodedUtf8 decodeUtf8(const char* first, const char* last, char16_t* out)
{
    return bestLevel().decode(first, last, out);
}

ClassifiedUtf8 classifyUtf8(const char* first, const char* last)
{
    return bestLevel().classify(first, last);
}

std::array<Utf8DecoderLevel, 4> utf8DecoderLevels()
{
    return {utf8DecoderForAvx512(), utf8DecoderForAvx2(), utf8DecoderForSsse3(),
            portableUtf8Decoder()};
}

Utf8DecoderLevel portableUtf8Decoder()
{
    return {"portable", decodePlain, classifyPlain};
}

} // namespace tarn::text
