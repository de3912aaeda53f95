#include "tarn/document/Value.hpp"

#include "text/utf16.hpp"
#include "text/utf8_decoder.hpp"

#include <algorithm>
#include <cstdio>

namespace tarn::document::detail {

namespace {

constexpr char16_t REPLACEMENT_CHARACTER = 0xFFFD;

/// As in `U+0001`.
std::string codePointName(unsigned codePoint)
{
    char name[16];
    std::snprintf(name, sizeof name, "U+%04X", codePoint);
    return name;
}

bool isLayout(char16_t unit)
{
    return unit == u'\t' || unit == u'\n' || unit == u'\r';
}

bool isCharacter(char16_t unit)
{
    return (unit >= u' ' || isLayout(unit)) && unit < 0xFFFE;
}

/// How many bytes at @p first are one ill-formed sequence: the longest beginning of a well-formed
/// one, or one byte.
std::size_t illFormedLength(const char* first, const char* last)
{
    const auto byte = [&](std::ptrdiff_t place) {
        return place < last - first ? static_cast<unsigned char>(first[place]) : 0u;
    };
    const unsigned lead = byte(0);
    const unsigned least = lead == 0xE0 ? 0xA0u : lead == 0xF0 ? 0x90u : 0x80u;
    const unsigned most = lead == 0xED ? 0x9Fu : lead == 0xF4 ? 0x8Fu : 0xBFu;
    if (lead < 0xC2 || lead >= 0xF5 || byte(1) < least || byte(1) > most) {
        return 1;
    }
    // One byte at least is missing: it would be well-formed.
    std::ptrdiff_t length = 2;
    while (byte(length) >> 6 == 2) {
        ++length;
    }
    return static_cast<std::size_t>(length);
}

} // namespace

void Value::assign(const Text& value, Unrepresentable unrepresentable)
{
    if (value.isNull()) {
        throw Refusal{"the text is a null pointer"};
    }
    const bool isToCheck = value.hasUtf16() ? copy(value.utf16(), unrepresentable)
                                            : decode(value.utf8(), unrepresentable);
    if (isToCheck) {
        checkCharacters(unrepresentable);
    }
}

bool Value::decode(std::string_view bytes, Unrepresentable unrepresentable)
{
    unsigned classes = 0;
    const char* illFormed = nullptr;
    text.resize_and_overwrite(
        text::decodedUtf8Bound(bytes.size()), [&](char16_t* units, std::size_t) noexcept {
            const char* const last = bytes.data() + bytes.size();
            text::ClassifiedUtf8 progress = text::decodeAndClassifyUtf8(bytes.data(), last, units);
            classes = progress.classes;
            while (progress.read != last && unrepresentable == Unrepresentable::replace) {
                *progress.written = REPLACEMENT_CHARACTER;
                const std::size_t length = illFormedLength(progress.read, last);
                progress =
                    text::decodeAndClassifyUtf8(progress.read + length, last, progress.written + 1);
                classes |= progress.classes;
            }
            illFormed = progress.read != last ? progress.read : nullptr;
            return static_cast<std::size_t>(progress.written - units);
        });
    if (illFormed != nullptr) {
        throw Refusal{"ill-formed UTF-8 at byte " + std::to_string(illFormed - bytes.data())};
    }
    layout = (classes & (text::TAB_OR_LINE_FEED | text::CARRIAGE_RETURN)) != 0;
    return (classes & text::FORBIDDEN) != 0;
}

bool Value::copy(std::u16string_view units, Unrepresentable unrepresentable)
{
    text = units;
    layout = false;
    bool isToCheck = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isCharacter(text[i])) {
            isToCheck = true;
        } else if (isLayout(text[i])) {
            layout = true;
        } else if (!text::isSurrogate(text[i])) {
            continue;
        } else if (text::isHighSurrogate(text[i]) && i + 1 < text.size() &&
                   text::isLowSurrogate(text[i + 1])) {
            ++i;
        } else if (unrepresentable == Unrepresentable::replace) {
            text[i] = REPLACEMENT_CHARACTER;
        } else {
            throw Refusal{"ill-formed UTF-16 at code unit " + std::to_string(i)};
        }
    }
    return isToCheck;
}

void Value::checkCharacters(Unrepresentable unrepresentable)
{
    for (char16_t& unit : text) {
        if (isCharacter(unit)) {
            continue;
        }
        if (unrepresentable == Unrepresentable::refuse) {
            throw Refusal{codePointName(unit) + " is not a character of XML 1.0"};
        }
        unit = REPLACEMENT_CHARACTER;
    }
}

} // namespace tarn::document::detail
