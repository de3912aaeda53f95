#include "tarn/xml/text_escaping.hpp"

#include "tarn/xml/copy_units.hpp"

#include <array>
#include <bit>
#include <cstdint>
#include <emmintrin.h> // SSE2, which every x86-64 processor has

namespace tarn::utils::detail {

namespace {

/// An entity reference, padded to the width of the vector that it is copied with.
struct Entity
{
    char16_t units[7];
    char16_t length;

    constexpr std::u16string_view text() const { return {units, length}; }
};

constexpr std::size_t ENTITY_WIDTH = 8;
static_assert(sizeof(Entity) == ENTITY_WIDTH * sizeof(char16_t));

constexpr std::size_t LONGEST_ENTITY = 6;

/// The entity references by code unit; empty for a code unit that has none. No special code unit is
/// beyond the table.
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

constexpr bool isSpecial(char16_t unit)
{
    return isMarkup(unit) || isSpecialControl(unit);
}

/// In code units: what one vector step looks at, and what one mask covers.
constexpr std::size_t STEP = 16;
constexpr std::size_t BLOCK = 64;

__m128i load(const char16_t* units)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

__m128i loadHalf(const char16_t* units)
{
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units));
}

/// A bit for each byte: whether the code unit that was packed into it is special. The packing must
/// have saturated as signed, so that code units from U+0080 on give bytes that are no special ones.
std::uint64_t specialBytes(__m128i bytes)
{
    const auto all = [](char value) { return _mm_set1_epi8(value); };
    const auto equals = [&](__m128i value, char wanted) {
        return _mm_cmpeq_epi8(value, all(wanted));
    };
    // Pairs that differ in one bit are found by one comparison: & and ', < and >, tab and CR.
    const __m128i quotes =
        _mm_or_si128(equals(bytes, '"'), equals(_mm_or_si128(bytes, all(1)), '\''));
    const __m128i angles = equals(_mm_or_si128(bytes, all(2)), '>');
    const __m128i controls =
        _mm_and_si128(_mm_cmpgt_epi8(bytes, all(0)), _mm_cmplt_epi8(bytes, all(0x20)));
    const __m128i layout =
        _mm_or_si128(equals(bytes, '\n'), equals(_mm_or_si128(bytes, all(4)), '\r'));
    const __m128i specials =
        _mm_or_si128(_mm_or_si128(quotes, angles), _mm_andnot_si128(layout, controls));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(specials));
}

std::uint64_t specialsOfStep(const char16_t* units)
{
    return specialBytes(_mm_packs_epi16(load(units), load(units + STEP / 2)));
}

std::uint64_t specialsOfBlock(const char16_t* units)
{
    return specialsOfStep(units) | specialsOfStep(units + STEP) << STEP |
           specialsOfStep(units + 2 * STEP) << 2 * STEP |
           specialsOfStep(units + 3 * STEP) << 3 * STEP;
}

/// The same for less than a step. Two loads that overlap cover every length between one and two.
[[gnu::always_inline]] inline std::uint64_t specialsOfTail(const char16_t* units,
                                                           std::size_t length)
{
    if (length >= 8) {
        const std::uint64_t specials =
            specialBytes(_mm_packs_epi16(load(units), load(units + length - 8)));
        return (specials & 0xFF) | specials >> 8 << (length - 8);
    }
    if (length >= 4) {
        const __m128i both = _mm_unpacklo_epi64(loadHalf(units), loadHalf(units + length - 4));
        const std::uint64_t specials = specialBytes(_mm_packs_epi16(both, _mm_setzero_si128()));
        return (specials & 0xF) | specials >> 4 << (length - 4);
    }
    std::uint64_t specials = 0;
    for (std::size_t i = 0; i < length; ++i) {
        specials |= static_cast<std::uint64_t>(isSpecial(units[i])) << i;
    }
    return specials;
}

/// Copies @p length code units and more, in whole steps.
char16_t* copySteps(const char16_t* from, std::size_t length, char16_t* out)
{
    copyBlock<STEP>(from, out);
    for (std::size_t copied = STEP; copied < length; copied += STEP) {
        copyBlock<STEP>(from + copied, out + copied);
    }
    return out + length;
}

char16_t* copyExactly(const char16_t* from, std::size_t length, char16_t* out)
{
    return copyUnits({from, length}, out);
}

/// Copies @p length code units with the markup characters that @p specials marks replaced. Stops
/// before a control character among them.
template <char16_t* copyRun(const char16_t*, std::size_t, char16_t*)>
EscapedRun replaceSpecials(const char16_t* units, std::size_t length, std::uint64_t specials,
                           char16_t* out)
{
    std::size_t position = 0;
    for (; specials != 0; specials &= specials - 1) {
        const auto special = static_cast<std::size_t>(std::countr_zero(specials));
        out = copyRun(units + position, special - position, out);
        const Entity& entity = ENTITIES[units[special]];
        if (entity.length == 0) [[unlikely]] {
            return {units + special, out};
        }
        copyBlock<ENTITY_WIDTH>(entity.units, out);
        out += entity.length;
        position = special + 1;
    }
    return {units + length, copyRun(units + position, length - position, out)};
}

} // namespace

std::u16string_view entityReference(char16_t special)
{
    return ENTITIES[special].text();
}

const char16_t* findSpecial(const char16_t* first, const char16_t* last)
{
    while (static_cast<std::size_t>(last - first) >= STEP) {
        const std::uint64_t specials = specialsOfStep(first);
        if (specials != 0) {
            return first + std::countr_zero(specials);
        }
        first += STEP;
    }
    const std::uint64_t specials = specialsOfTail(first, static_cast<std::size_t>(last - first));
    return specials != 0 ? first + std::countr_zero(specials) : last;
}

EscapedRun escapeMarkup(const char16_t* first, const char16_t* last, char16_t* out,
                        const char16_t* outLast)
{
    // What a copy of so many code units may write, copies that overrun its end included.
    constexpr auto room = [](std::size_t units) { return units * LONGEST_ENTITY + STEP; };
    static_assert(room(STEP) <= ESCAPING_MARGIN);

    const auto unread = [&] { return static_cast<std::size_t>(last - first); };
    const auto left = [&] { return static_cast<std::size_t>(outLast - out); };
    while (unread() >= BLOCK + STEP && left() >= room(BLOCK)) {
        const std::uint64_t specials = specialsOfBlock(first);
        if (specials == 0) {
            copyBlock<BLOCK>(first, out);
            first += BLOCK;
            out += BLOCK;
            continue;
        }
        const EscapedRun block = replaceSpecials<copySteps>(first, BLOCK, specials, out);
        out = block.written;
        if (block.read != first + BLOCK) {
            return block;
        }
        first = block.read;
    }
    while (unread() >= STEP && left() >= ESCAPING_MARGIN) {
        const EscapedRun step =
            replaceSpecials<copyExactly>(first, STEP, specialsOfStep(first), out);
        out = step.written;
        if (step.read != first + STEP) {
            return step;
        }
        first = step.read;
    }
    if (unread() >= STEP || left() < ESCAPING_MARGIN) {
        return {first, out};
    }
    const std::uint64_t specials = specialsOfTail(first, unread());
    if (specials == 0) {
        return {last, copyExactly(first, unread(), out)};
    }
    return replaceSpecials<copyExactly>(first, unread(), specials, out);
}

} // namespace tarn::utils::detail
