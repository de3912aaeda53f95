#include "corda/i18n/codecvt_ustring_to_string.hpp"

#include "text/utf8_encoder.hpp"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace corda::i18n {

namespace {

constexpr std::string_view UTF8_NAME = "UTF-8";
constexpr std::string_view REPLACEMENT_CHARACTER = "\xEF\xBF\xBD"; // U+FFFD

bool equalIgnoringCase(std::string_view left, std::string_view right)
{
    const auto upper = [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    };
    return std::ranges::equal(left, right, {}, upper, upper);
}

} // namespace

codecvt_ustring_to_string::codecvt_ustring_to_string(const std::string& encoding,
                                                     bool replaceUnpaired)
    : replaceUnpaired(replaceUnpaired)
{
    if (encoding != UTF8_NAME && !equalIgnoringCase(encoding, UTF8_NAME)) {
        throw std::invalid_argument("no conversion from UTF-16 to the encoding \"" + encoding +
                                    "\"");
    }
}

std::string codecvt_ustring_to_string::do_convert(const char16_t* text, unsigned long length) const
{
    const char16_t* unpaired = nullptr;
    std::string bytes;
    bytes.resize_and_overwrite(tarn::text::encodedUtf8Bound(length), [&](char* out,
                                                                         std::size_t) noexcept {
        const char16_t* const last = text + length;
        tarn::text::EncodedUtf8 progress = tarn::text::encodeUtf8(text, last, out);
        while (progress.read != last) {
            if (!replaceUnpaired) {
                unpaired = progress.read;
                break;
            }
            char* const resumed = std::ranges::copy(REPLACEMENT_CHARACTER, progress.written).out;
            progress = tarn::text::encodeUtf8(progress.read + 1, last, resumed);
        }
        return progress.written - out;
    });
    if (unpaired != nullptr) {
        throw std::range_error("unpaired surrogate at index " + std::to_string(unpaired - text));
    }
    return bytes;
}

} // namespace corda::i18n
