// UTF-16 to UTF-8 with vectors of 64 bytes: sixteen code points are spread over slots of four bytes
// each, and one instruction closes the gaps between the bytes that are kept.

#include "text/utf8_encoder.hpp"

#include <bit>
#include <cstdint>
#include <immintrin.h>

namespace tarn::text {

namespace {

constexpr std::ptrdiff_t STEP = 16;       ///< In code units, one to a slot.
constexpr std::ptrdiff_t ASCII_STEP = 32; ///< In code units.

/// Sixteen slots. The last byte of an encoding stands in the last byte of its slot, which is the
/// highest of the number.
using Slots = __m512i;

[[gnu::target("avx512f")]] inline Slots all(unsigned value)
{
    return _mm512_set1_epi32(static_cast<int>(value));
}

[[gnu::target("avx512f")]] inline Slots slotsFrom(const char16_t* units)
{
    return _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(units)));
}

/// Which of the slots hold a code unit of the kind that @p pattern gives in the bits of @p mask.
[[gnu::target("avx512f")]] inline std::uint32_t matching(Slots units, unsigned mask,
                                                         unsigned pattern)
{
    return _mm512_cmpeq_epi32_mask(_mm512_and_si512(units, all(mask)), all(pattern));
}

/// Encodes the code points in the slots, but those that are marked in @p dropped, and writes all
/// bytes that belong to the first @p count slots. Returns their end.
[[gnu::target("avx512f,avx512bw,avx512vbmi,avx512vbmi2,popcnt")]] inline char*
encodeSlots(Slots codePoints, std::uint32_t fourBytes, std::uint32_t dropped, unsigned count,
            char* out)
{
    const __mmask16 moreBytes = _mm512_cmpge_epu32_mask(codePoints, all(0x80));
    const __mmask16 threeBytes = _mm512_cmpge_epu32_mask(codePoints, all(0x800));

    // Six bits for each byte, from the slot's low bits in its last byte to the high bits in its
    // first.
    const __m512i bitOffsets = _mm512_set1_epi64(0x20262C32'00060C12);
    const __m512i payload =
        _mm512_and_si512(_mm512_multishift_epi64_epi8(bitOffsets, codePoints),
                         _mm512_mask_mov_epi32(all(0x7F7F7F7F), moreBytes, all(0x3F3F3F3F)));

    Slots tags = _mm512_maskz_mov_epi32(moreBytes, all(0x80C00000));
    tags = _mm512_mask_mov_epi32(tags, threeBytes, all(0x8080E000));
    tags = _mm512_mask_mov_epi32(tags, static_cast<__mmask16>(fourBytes), all(0x808080F0));

    // Every byte of a longer encoding has its highest bit set by its tag.
    const Slots kept = _mm512_maskz_mov_epi32(
        static_cast<__mmask16>(~dropped), _mm512_mask_mov_epi32(all(0x80000000), moreBytes, tags));
    std::uint64_t keptBytes = _mm512_movepi8_mask(kept);
    if (count < STEP) {
        keptBytes &= (std::uint64_t{1} << 4 * count) - 1;
    }
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(keptBytes, _mm512_or_si512(payload, tags)));
    return out + std::popcount(keptBytes);
}

/// Encodes the first @p count of the code units in @p units. In @p next each slot holds the code
/// unit after it.
[[gnu::target("avx512f,avx512bw,avx512vbmi,avx512vbmi2,popcnt")]] inline EncodedUtf8
encodeStep(Slots units, Slots next, unsigned count, const char16_t* first, char* out)
{
    const std::uint32_t surrogates = matching(units, 0xF800, 0xD800);
    if (surrogates == 0) {
        return {first + count, encodeSlots(units, 0, 0, count, out)};
    }
    const std::uint32_t high = matching(units, 0xFC00, 0xD800);
    const std::uint32_t low = surrogates ^ high;
    const std::uint32_t pairs = high & matching(next, 0xFC00, 0xDC00);
    const std::uint32_t unpaired = (high ^ pairs) | (low & ~(pairs << 1));
    if (unpaired != 0) {
        count = static_cast<unsigned>(std::countr_zero(unpaired));
    }
    constexpr unsigned SURROGATE_BITS = (0xD800u << 10) + 0xDC00u - 0x10000u;
    const Slots joined =
        _mm512_sub_epi32(_mm512_add_epi32(_mm512_slli_epi32(units, 10), next), all(SURROGATE_BITS));
    const Slots codePoints = _mm512_mask_mov_epi32(units, static_cast<__mmask16>(pairs), joined);
    char* const written = encodeSlots(codePoints, pairs, low, count, out);
    // The second half of the last pair may be beyond the slots. A branch, so that the next load
    // need not wait for the answer.
    if (count == STEP && (pairs >> (STEP - 1)) != 0) [[unlikely]] {
        return {first + STEP + 1, written};
    }
    return {first + count, written};
}

[[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")]] EncodedUtf8
encode(const char16_t* first, const char16_t* last, char* out)
{
    EncodedUtf8 progress{first, out};
    while (last - progress.read > STEP) {
        if (last - progress.read >= ASCII_STEP) {
            const __m512i units = _mm512_loadu_si512(progress.read);
            if (_mm512_test_epi16_mask(units, _mm512_set1_epi16(static_cast<short>(0xFF80))) == 0) {
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(progress.written),
                                    _mm512_cvtepi16_epi8(units));
                progress.read += ASCII_STEP;
                progress.written += ASCII_STEP;
                continue;
            }
        }
        const char16_t* const from = progress.read;
        progress = encodeStep(slotsFrom(from), slotsFrom(from + 1), STEP, from, progress.written);
        if (progress.read < from + STEP) {
            return progress;
        }
    }
    if (progress.read == last) {
        return progress;
    }
    const auto count = static_cast<unsigned>(last - progress.read);
    const auto present = static_cast<__mmask16>((1u << count) - 1);
    const Slots units = _mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(present, progress.read));
    const Slots next = _mm512_cvtepu16_epi32(
        _mm256_maskz_loadu_epi16(static_cast<__mmask16>(present >> 1), progress.read + 1));
    return encodeStep(units, next, count, progress.read, progress.written);
}

} // namespace

Utf8Encoder utf8EncoderForAvx512()
{
    const bool available =
        __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
        __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("popcnt");
    return available ? encode : nullptr;
}

} // namespace tarn::text
