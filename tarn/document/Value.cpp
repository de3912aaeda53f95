#include "tarn/document/Value.hpp"

#include "tarn/document/checks.hpp"
#include "text/utf8_encoder.hpp"

#include <algorithm>
#include <cstdio>

namespace tarn::document::detail {

namespace {

constexpr std::string_view REPLACEMENT_CHARACTER = "\xEF\xBF\xBD";

/// How many bytes at the beginning of @p text, which is not empty, are one ill-formed sequence: the
/// longest beginning of a well-formed one, or one byte.
std::size_t illFormedLength(std::string_view text)
{
    const auto byte = [text](std::size_t place) {
        return place < text.size() ? static_cast<unsigned char>(text[place]) : 0u;
    };
    const unsigned lead = byte(0);
    const unsigned least = lead == 0xE0 ? 0xA0u : lead == 0xF0 ? 0x90u : 0x80u;
    const unsigned most = lead == 0xED ? 0x9Fu : lead == 0xF4 ? 0x8Fu : 0xBFu;
    if (lead < 0xC2 || lead >= 0xF5 || byte(1) < least || byte(1) > most) {
        return 1;
    }
    // One byte at least is missing: it would be well-formed.
    std::size_t length = 2;
    while (byte(length) >> 6 == 2) {
        ++length;
    }
    return length;
}

/// How many bytes at the beginning of @p text, which is well-formed, are a character that XML 1.0
/// does not have; 0 if it has it.
std::size_t forbiddenLength(std::string_view text)
{
    constexpr std::string_view NON_CHARACTERS = "\xEF\xBF";
    const char first = text.front();
    if (first >= 0 && first < ' ') {
        return first == '\t' || first == '\n' || first == '\r' ? 0 : 1;
    }
    const bool isNonCharacter =
        text.starts_with(NON_CHARACTERS) && (text[2] == '\xBE' || text[2] == '\xBF');
    return isNonCharacter ? 3 : 0;
}

/// The first character that XML 1.0 does not have, as in `U+0001`. There is one in @p text, which
/// is well-formed.
std::string forbiddenCharacter(std::string_view text)
{
    while (forbiddenLength(text) == 0) {
        text.remove_prefix(1);
    }
    if (forbiddenLength(text) == 3) {
        return text[2] == '\xBE' ? "U+FFFE" : "U+FFFF";
    }
    char name[16];
    std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(text.front()));
    return name;
}

} // namespace

void Value::assign(const Text& text, Unrepresentable unrepresentable)
{
    if (text.textKind() == Text::Kind::Null) {
        throw Refusal{"the text is a null pointer"};
    }
    if (text.textKind() == Text::Kind::OutOfRange) {
        throw Refusal{"the time is out of range"};
    }
    if (text.textKind() == Text::Kind::Utf16) {
        convert(text.utf16(), unrepresentable);
        view = converted;
    } else {
        view = text.utf8();
    }
    const char* const last = view.data() + view.size();
    const auto classified = text::classifyUtf8(view.data(), last);
    classes = classified.classes;
    if (classified.read == last && !has(text::FORBIDDEN)) {
        return;
    }
    if (unrepresentable == Unrepresentable::replace) {
        replace(view);
        view = replaced;
        classes = text::classifyUtf8(view.data(), view.data() + view.size()).classes;
    } else if (classified.read != last) {
        throw Refusal{"ill-formed UTF-8 at byte " + std::to_string(classified.read - view.data())};
    } else {
        throw Refusal{forbiddenCharacter(view) + " is not a character of XML 1.0"};
    }
}

void Value::convert(std::u16string_view text, Unrepresentable unrepresentable)
{
    converted.clear();
    const char16_t* first = text.data();
    const char16_t* const last = first + text.size();
    while (true) {
        const std::size_t used = converted.size();
        converted.resize_and_overwrite(
            used + text::encodedUtf8Bound(static_cast<std::size_t>(last - first)),
            [&](char* bytes, std::size_t) noexcept {
                const auto encoded = text::encodeUtf8(first, last, bytes + used);
                first = encoded.read;
                return static_cast<std::size_t>(encoded.written - bytes);
            });
        if (first == last) {
            return;
        }
        if (unrepresentable == Unrepresentable::refuse) {
            throw Refusal{"ill-formed UTF-16 at code unit " + std::to_string(first - text.data())};
        }
        converted += REPLACEMENT_CHARACTER;
        ++first;
    }
}

void Value::replace(std::string_view text)
{
    replaced.clear();
    while (!text.empty()) {
        const char* const last = text.data() + text.size();
        const auto wellFormed =
            static_cast<std::size_t>(text::classifyUtf8(text.data(), last).read - text.data());
        for (std::size_t place = 0; place < wellFormed;) {
            const std::size_t length = forbiddenLength(text.substr(place));
            replaced += length == 0 ? text.substr(place, 1) : REPLACEMENT_CHARACTER;
            place += std::max<std::size_t>(length, 1);
        }
        text.remove_prefix(wellFormed);
        if (!text.empty()) {
            replaced += REPLACEMENT_CHARACTER;
            text.remove_prefix(illFormedLength(text));
        }
    }
}

} // namespace tarn::document::detail
