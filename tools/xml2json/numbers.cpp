#include "tools/xml2json/numbers.hpp"

#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>

namespace xml2json {

namespace {

enum class Notation
{
    NONE, ///< Not a number.
    XML,  ///< An xs:double, but not in JSON.
    JSON
};

std::size_t skipDigits(std::string_view text, std::size_t start)
{
    while (start < text.size() && text[start] >= '0' && text[start] <= '9') {
        ++start;
    }
    return start;
}

/// Leaves out INF and NaN, which are no numbers in JSON.
Notation notationOf(std::string_view text)
{
    const auto isAt = [&](std::size_t place, std::string_view characters) {
        return place < text.size() && characters.contains(text[place]);
    };
    const std::size_t start = isAt(0, "+-") ? 1 : 0;
    std::size_t end = skipDigits(text, start);
    const std::size_t integerDigits = end - start;
    bool isJson = !isAt(0, "+") && integerDigits > 0 && (integerDigits == 1 || !isAt(start, "0"));
    std::size_t digits = integerDigits;
    if (isAt(end, ".")) {
        const std::size_t fraction = end + 1;
        end = skipDigits(text, fraction);
        isJson = isJson && end > fraction;
        digits += end - fraction;
    }
    if (digits == 0) {
        return Notation::NONE;
    }
    if (isAt(end, "eE")) {
        const std::size_t exponent = end + (isAt(end + 1, "+-") ? 2 : 1);
        end = skipDigits(text, exponent);
        if (end <= exponent) {
            return Notation::NONE;
        }
    }
    if (end < text.size()) {
        return Notation::NONE;
    }
    return isJson ? Notation::JSON : Notation::XML;
}

/// As XPath casts it to xs:string: with the fewest digits, and with an exponent unless the value is
/// between a millionth and a million.
std::string toString(double value)
{
    std::array<char, 32> buffer{};
    const auto print = [&](std::chars_format format) {
        return std::string(
            buffer.data(),
            std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format).ptr);
    };
    const double magnitude = std::abs(value);
    if (value == 0 || (magnitude >= 0.000001 && magnitude < 1'000'000)) {
        return print(std::chars_format::fixed);
    }
    const std::string text = print(std::chars_format::scientific);
    const std::size_t mark = text.find('e');
    const std::string mantissa = text.substr(0, mark);
    const long exponent = std::strtol(text.c_str() + mark + 1, nullptr, 10);
    return mantissa + (mantissa.contains('.') ? "E" : ".0E") + std::to_string(exponent);
}

} // namespace

std::string_view trim(std::string_view text)
{
    while (!text.empty() && isWhiteSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isWhiteSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<bool> parseBoolean(std::string_view text)
{
    if (text == "true" || text == "1") {
        return true;
    }
    if (text == "false" || text == "0") {
        return false;
    }
    return std::nullopt;
}

bool makeJsonNumber(std::string& text)
{
    switch (notationOf(text)) {
    case Notation::JSON:
        return true;
    case Notation::XML: {
        // from_chars would not tell a number that is too large from one that is too small. The
        // decimal point is a point, whatever the locale of the program.
        static const locale_t C_LOCALE = ::newlocale(LC_ALL_MASK, "C", nullptr);
        if (const double value = ::strtod_l(text.c_str(), nullptr, C_LOCALE);
            std::isfinite(value)) {
            text = toString(value);
            return true;
        }
        return false;
    }
    default:
        return false;
    }
}

} // namespace xml2json
