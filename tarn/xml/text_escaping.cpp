#include "tarn/xml/text_escaping.hpp"

#include "tarn/xml/escaping_steps.hpp"

#include <algorithm>

namespace tarn::utils::detail {

namespace {

constexpr std::size_t STEP = ESCAPING_STEP;
constexpr std::size_t BLOCK = ESCAPING_BLOCK;

constexpr bool isSpecialControl(unsigned unit)
{
    return unit < u' ' && unit != 0 && unit != u'\t' && unit != u'\n' && unit != u'\r';
}

constexpr Replacements replacementsOfMarkup()
{
    Replacements replacements{};
    replacements[u'<'] = {u"&lt;", 4};
    replacements[u'>'] = {u"&gt;", 4};
    replacements[u'&'] = {u"&amp;", 5};
    replacements[u'"'] = {u"&quot;", 6};
    replacements[u'\''] = {u"&apos;", 6};
    return replacements;
}

constexpr Replacements replacementsWithReferences()
{
    const auto digit = [](unsigned value) { return static_cast<char16_t>(u'0' + value); };
    Replacements replacements = replacementsOfMarkup();
    for (unsigned unit = 0; unit < u' '; ++unit) {
        if (isSpecialControl(unit) && unit < 10) {
            replacements[unit] = {{u'&', u'#', digit(unit), u';'}, 4};
        } else if (isSpecialControl(unit)) {
            replacements[unit] = {{u'&', u'#', digit(unit / 10), digit(unit % 10), u';'}, 5};
        }
    }
    return replacements;
}

constexpr Replacements replacementsWithoutControls()
{
    Replacements replacements = replacementsOfMarkup();
    replacements[u'\v'] = {u" ", 1};
    return replacements;
}

constexpr bool isSpecial(char16_t unit)
{
    constexpr Replacements replacements = replacementsWithReferences();
    return unit < replacements.size() && replacements[unit].length != 0;
}

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

EscapedRun escapeWithSse2(const char16_t* first, const char16_t* last, char16_t* out,
                          const char16_t* outLast, const Replacements& replacements)
{
    while (hasBlock(first, last, out, outLast)) {
        const std::uint64_t specials = specialsOfBlock(first);
        if (specials == 0) {
            copyBlock<BLOCK>(first, out);
            out += BLOCK;
        } else {
            out = replaceSpecials<copySteps>(first, BLOCK, specials, out, replacements);
        }
        first += BLOCK;
    }
    return escapeBySteps(first, last, out, outLast, replacements);
}

Escaper bestEscaper()
{
    const auto levels = escaperLevels();
    return std::ranges::find_if(
               levels, [](Escaper escape) { return escape != nullptr; }, &EscaperLevel::escape)
        ->escape;
}

} // namespace

constexpr Replacements REPLACEMENTS = replacementsWithReferences();
constexpr Replacements REPLACEMENTS_OF_XML_1_0 = replacementsWithoutControls();

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

EscapedRun escape(const char16_t* first, const char16_t* last, char16_t* out,
                  const char16_t* outLast, const Replacements& replacements)
{
    if (!hasBlock(first, last, out, outLast)) {
        return escapeBySteps(first, last, out, outLast, replacements);
    }
    static const Escaper best = bestEscaper();
    return best(first, last, out, outLast, replacements);
}

std::array<EscaperLevel, 2> escaperLevels()
{
    return {{{"AVX2", escaperForAvx2()}, {"SSE2", escapeWithSse2}}};
}

EscapedRun escapeBySteps(const char16_t* first, const char16_t* last, char16_t* out,
                         const char16_t* outLast, const Replacements& replacements)
{
    const auto unread = [&] { return static_cast<std::size_t>(last - first); };
    const auto left = [&] { return static_cast<std::size_t>(outLast - out); };
    while (unread() >= STEP && left() >= ESCAPING_MARGIN) {
        out = replaceSpecials<copyExactly>(first, STEP, specialsOfStep(first), out, replacements);
        first += STEP;
    }
    if (left() < ESCAPING_MARGIN) {
        return {first, out};
    }
    const std::uint64_t specials = specialsOfTail(first, unread());
    if (specials == 0) {
        return {last, copyExactly(first, unread(), out)};
    }
    return {last, replaceSpecials<copyExactly>(first, unread(), specials, out, replacements)};
}

} // namespace tarn::utils::detail
