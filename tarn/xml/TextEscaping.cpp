#include "tarn/xml/TextEscaping.hpp"

#include "tarn/xml/PieceOutput.hpp"

#include <array>
#include <bit>
#include <emmintrin.h>

namespace tarn::utils {

namespace {

/// An entity reference, padded to the width of the vector that it is copied with.
struct Entity
{
    char16_t units[7];
    char16_t length;

    constexpr std::u16string_view text() const { return {units, length}; }
};

/// The entity references by code unit: the last markup character is U+003E.
constexpr std::array<Entity, 64> ENTITIES = [] {
    std::array<Entity, 64> entities{};
    entities[u'<'] = {u"&lt;", 4};
    entities[u'>'] = {u"&gt;", 4};
    entities[u'&'] = {u"&amp;", 5};
    entities[u'"'] = {u"&quot;", 6};
    entities[u'\''] = {u"&apos;", 6};
    return entities;
}();

constexpr bool isMarkup(char16_t unit)
{
    return unit < ENTITIES.size() && ENTITIES[unit].length != 0;
}

constexpr bool isSpecialControl(char16_t unit)
{
    return unit < 0x20 && unit != 0 && unit != u'\t' && unit != u'\n' && unit != u'\r';
}

} // namespace

std::u16string_view entityReference(char16_t unit)
{
    return unit < ENTITIES.size() ? ENTITIES[unit].text() : std::u16string_view();
}

const char16_t* findSpecialPortable(const char16_t* first, const char16_t* last)
{
    while (first != last && !isMarkup(*first) && !isSpecialControl(*first)) {
        ++first;
    }
    return first;
}

EscapedRun escapeMarkupPortable(const char16_t* first, const char16_t* last, char16_t* out,
                                const char16_t* outLast)
{
    while (first != last && !isSpecialControl(*first) &&
           outLast - out >= static_cast<std::ptrdiff_t>(ESCAPING_MARGIN)) {
        if (isMarkup(*first)) {
            out = copyUnits(ENTITIES[*first].text(), out);
        } else {
            *out++ = *first;
        }
        ++first;
    }
    return {first, out};
}

const char16_t* findSpecial(const char16_t* first, const char16_t* last)
{
    return findSpecialPortable(first, last);
}

EscapedRun escapeMarkup(const char16_t* first, const char16_t* last, char16_t* out,
                        const char16_t* outLast)
{
    return escapeMarkupPortable(first, last, out, outLast);
}

} // namespace tarn::utils
