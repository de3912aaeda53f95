#include "tools/json2xml/string_block.hpp"

#include "text/plain_ascii.hpp"

#include <algorithm>
#include <bit>
#include <emmintrin.h>

namespace json2xml {

namespace {

constexpr std::ptrdiff_t STEP = sizeof(__m128i);

/// The control character that follows printable ASCII.
constexpr char DELETE = 0x7F;

__m128i load(const char* bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

/// A bit for each of the bytes that is a quotation mark, a backslash or @p isOther.
unsigned endsAt(__m128i bytes, __m128i isOther)
{
    const __m128i isQuotationMark = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
    const __m128i isBackslash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(isQuotationMark, isBackslash), isOther)));
}

/// The first byte that ends a block.
const char* findEnd(const char* first, const char* last)
{
    while (first < last) {
        const __m128i bytes = load(first);
        if (const unsigned ends = endsAt(bytes, tarn::text::isControl(bytes)); ends != 0) {
            return std::min(first + std::countr_zero(ends), last);
        }
        first += STEP;
    }
    return last;
}

} // namespace

void readStringBlock(const char* first, const char* last, StringBlock& block)
{
    const char* const start = first;
    last = first + std::min<std::ptrdiff_t>(last - first, STRING_BLOCK_SIZE);
    char16_t* out = block.units.data();
    while (first < last) {
        const __m128i bytes = load(first);
        const auto store = [out](std::ptrdiff_t place, __m128i units) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + place), units);
        };
        store(0, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        store(STEP / 2, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
        // As signed numbers those that are not ASCII are the smallest.
        const __m128i isNotPrintable = _mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(' ')),
                                                    _mm_cmpeq_epi8(bytes, _mm_set1_epi8(DELETE)));
        const unsigned ends = endsAt(bytes, isNotPrintable);
        const std::ptrdiff_t count =
            std::min<std::ptrdiff_t>(ends != 0 ? std::countr_zero(ends) : STEP, last - first);
        first += count;
        out += count;
        if (ends != 0) {
            break;
        }
    }
    block.isPlain = first == last || static_cast<unsigned char>(*first) < DELETE;
    if (!block.isPlain) {
        const tarn::text::DecodedUtf8 decoded =
            tarn::text::decodeUtf8(first, findEnd(first, last), out);
        first = decoded.read;
        out = decoded.written;
    }
    block.bytesRead = static_cast<std::size_t>(first - start);
    block.size = static_cast<std::size_t>(out - block.units.data());
}

} // namespace json2xml
