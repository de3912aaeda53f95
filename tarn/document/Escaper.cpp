#include "tarn/document/Escaper.hpp"

#include "text/plain_ascii.hpp"

#include <algorithm>
#include <bit>

namespace tarn::document::detail {

namespace {

std::u16string referenceTo(char16_t whiteSpace)
{
    return whiteSpace == u'\t' ? u"&#9;" : whiteSpace == u'\n' ? u"&#10;" : u"&#13;";
}

} // namespace

std::size_t Escaper::lengthBeforeSpecial(std::string_view text)
{
    std::size_t length = 0;
    for (; text.size() - length >= 16; length += 16) {
        const unsigned special = text::specialsOf(text.data() + length);
        if (special != 0) {
            return length + static_cast<std::size_t>(std::countr_zero(special));
        }
    }
    const auto isPlain = [](char byte) {
        return (byte < 0 || byte >= ' ') &&
               std::string_view("<>&\"'").find(byte) == std::string_view::npos;
    };
    while (length < text.size() && isPlain(text[length])) {
        ++length;
    }
    return length;
}

std::size_t Escaper::lengthOfCharacters(std::string_view text, std::size_t longest)
{
    if (text.size() <= longest) {
        return text.size();
    }
    while ((text[longest] & 0xC0) == 0x80) { // a continuation byte
        --longest;
    }
    return longest;
}

const std::u16string& Escaper::escape(std::string_view value, std::u16string_view referenced)
{
    if (!writer) {
        writer.emplace(markup);
    }
    markup.clear();
    units.resize_and_overwrite(
        text::decodedUtf8Bound(value.size()), [&](char16_t* out, std::size_t) noexcept {
            const auto decoded = text::decodeUtf8(value.data(), value.data() + value.size(), out);
            return static_cast<std::size_t>(decoded.written - out);
        });
    if (referenced.empty()) {
        writer->writeValue(units);
        return markup;
    }
    std::u16string_view rest = units;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find_first_of(referenced), rest.size());
        piece.clear();
        piece += rest.substr(0, length); // to assign it allocates with Clang 14
        writer->writeValue(piece);
        rest.remove_prefix(length);
        if (!rest.empty()) {
            writer->writeRawXml(referenceTo(rest.front()));
            rest.remove_prefix(1);
        }
    }
    return markup;
}

} // namespace tarn::document::detail
