// Escaping with vectors of 32 bytes, for long text; what is left of a block is escaped by steps.

#include "tarn/xml/escaping_steps.hpp"
#include "tarn/xml/text_escaping.hpp"
#include "text/kernel_level.hpp"

#include <immintrin.h>

namespace tarn::utils::detail {

namespace {

constexpr std::size_t BLOCK = ESCAPING_BLOCK;
constexpr std::size_t HALF = BLOCK / 2;

[[gnu::target("avx2")]] inline __m256i load(const char16_t* units)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(units));
}

[[gnu::target("avx2")]] inline void store(char16_t* units, __m256i vector)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(units), vector);
}

/// Copies half a block and returns a bit for each code unit: whether it is special.
///
/// A byte is special if the entries for its upper and for its lower half have a bit in common: 1
/// stands for 0x, 2 for 1x, 4 for 2x, 8 for 3x. Code units from U+0080 on become 7F, which has no
/// entry, or 80, for which a shuffle gives zero.
[[gnu::target("avx2")]] inline std::uint32_t copyHalf(const char16_t* from, char16_t* out)
{
    const __m256i low = load(from);
    const __m256i high = load(from + HALF / 2);
    store(out, low);
    store(out + HALF / 2, high);
    const __m256i packed = _mm256_packs_epi16(low, high);
    const __m256i bytes = _mm256_permute4x64_epi64(packed, 0b11'01'10'00);
    const __m256i byUpper =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(1, 2, 4, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i byLower = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, 3, 3 | 4, 3, 3, 3, 3 | 4, 3 | 4, 3, 2, 2, 3, 3 | 8, 2, 3 | 8, 3));
    const __m256i upper = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
    const __m256i common =
        _mm256_and_si256(_mm256_shuffle_epi8(byUpper, upper), _mm256_shuffle_epi8(byLower, bytes));
    const __m256i plain = _mm256_cmpeq_epi8(common, _mm256_setzero_si256());
    return ~static_cast<std::uint32_t>(_mm256_movemask_epi8(plain));
}

[[gnu::target("avx2")]] EscapedRun escapeWithAvx2(const char16_t* first, const char16_t* last,
                                                  char16_t* out, const char16_t* outLast,
                                                  const Replacements& replacements)
{
    while (hasBlock(first, last, out, outLast)) {
        const std::uint64_t lower = copyHalf(first, out);
        const std::uint64_t upper = copyHalf(first + HALF, out + HALF);
        const std::uint64_t specials = lower | upper << HALF;
        out = specials == 0 ? out + BLOCK
                            : replaceSpecials<copySteps>(first, BLOCK, specials, out, replacements);
        first += BLOCK;
    }
    return escapeBySteps(first, last, out, outLast, replacements);
}

} // namespace

Escaper escaperForAvx2()
{
    return text::canUse(text::KernelLevel::Avx2) ? escapeWithAvx2 : nullptr;
}

} // namespace tarn::utils::detail
