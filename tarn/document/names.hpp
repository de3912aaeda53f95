// The grammar of names, for the compiler and for the running program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarn::document::detail {

// A constant expression cannot call these, and the compiler says so with their names.
void theNameIsNotAnNcName();
void theNamespaceNameOrThePrefixIsNotAllowed();

/// Takes the first code point from @p text, which is not empty. Ill-formed UTF-8 gives one that no
/// name has, and need not be taken.
constexpr std::uint32_t takeCodePoint(std::string_view& text)
{
    constexpr std::uint32_t NOT_IN_NAMES = 0xFFFFFFFF;
    const auto byte = [&text](std::size_t place) {
        return place < text.size()
                   ? static_cast<std::uint32_t>(static_cast<unsigned char>(text[place]))
                   : 0u;
    };
    const std::uint32_t lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 1) {
        text.remove_prefix(1);
        return lead;
    }
    std::uint32_t codePoint = lead & (0x7Fu >> length);
    for (std::size_t place = 1; place < length; ++place) {
        if (byte(place) >> 6 != 2) {
            return NOT_IN_NAMES;
        }
        codePoint = codePoint << 6 | (byte(place) & 0x3F);
    }
    text.remove_prefix(length);
    constexpr std::uint32_t LEAST[] = {0, 0, 0x80, 0x800, 0x10000};
    return lead >= 0xC0 && lead < 0xF8 && codePoint >= LEAST[length] ? codePoint : NOT_IN_NAMES;
}

struct CodePoints
{
    std::uint32_t first;
    std::uint32_t last;
};

// XML 1.0, fifth edition, productions 4 and 4a, without the colon.
inline constexpr CodePoints NAME_STARTS[] = {
    {'A', 'Z'},       {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
inline constexpr CodePoints NAME_CONTINUATIONS[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t COUNT>
constexpr bool contains(const CodePoints (&ranges)[COUNT], std::uint32_t codePoint)
{
    for (const CodePoints& range : ranges) { // NOLINT(readability-use-anyofallof): C++17
        if (codePoint >= range.first && codePoint <= range.last) {
            return true;
        }
    }
    return false;
}

constexpr bool isNcName(std::string_view text)
{
    if (text.empty() || !contains(NAME_STARTS, takeCodePoint(text))) {
        return false;
    }
    while (!text.empty()) {
        const std::uint32_t codePoint = takeCodePoint(text);
        if (!contains(NAME_STARTS, codePoint) && !contains(NAME_CONTINUATIONS, codePoint)) {
            return false;
        }
    }
    return true;
}

inline constexpr std::string_view XML_URI = "http://www.w3.org/XML/1998/namespace";
inline constexpr std::string_view XMLNS_URI = "http://www.w3.org/2000/xmlns/";

/// Whether @p uri is a name for a namespace, leaving aside which names are reserved.
constexpr bool isUri(std::string_view uri)
{
    constexpr std::string_view NOT_IN_URIS = "<>\"{}|\\^`";
    for (const char character : uri) {
        if (character <= ' ' || character > '~' ||
            NOT_IN_URIS.find(character) != std::string_view::npos) {
            return false;
        }
    }
    return !uri.empty();
}

/// Whether @p uri can have @p prefix, and neither of them is reserved.
constexpr bool areAllowedTogether(std::string_view uri, std::string_view prefix)
{
    const bool isXml = uri == XML_URI;
    return (prefix.empty() || isNcName(prefix)) && (prefix == "xml") == isXml &&
           prefix != "xmlns" && uri != XMLNS_URI;
}

} // namespace tarn::document::detail
