// The kernels that turn well-formed UTF-16 into UTF-8.
#pragma once

#include <cstddef>

namespace tarn::text {

/// How far an encoder got.
struct EncodedUtf8
{
    const char16_t* read; ///< The first code unit that was not encoded.
    char* written;        ///< One past the last byte that belongs to the result.
};

/// What an encoder may write for @p length code units, in bytes.
constexpr std::size_t encodedUtf8Bound(std::size_t length)
{
    constexpr std::size_t BYTES_PER_UNIT = 3; // a surrogate pair needs four bytes for its two units
    constexpr std::size_t STORE_OVERRUN = 64; // vector stores are wider than what they keep
    return length * BYTES_PER_UNIT + STORE_OVERRUN;
}

/// Encodes the code units from @p first to @p last and stops at the end or before the first
/// unpaired surrogate. @p out must have room for `encodedUtf8Bound(last - first)` bytes.
EncodedUtf8 encodeUtf8(const char16_t* first, const char16_t* last, char* out);

using Utf8Encoder = EncodedUtf8 (*)(const char16_t* first, const char16_t* last, char* out);

/// The same, one code point at a time.
EncodedUtf8 encodeUtf8Portable(const char16_t* first, const char16_t* last, char* out);

/// The same with the vectors of one level of processors, or null if this processor is below it.
Utf8Encoder utf8EncoderForSsse3();
Utf8Encoder utf8EncoderForAvx512();

} // namespace tarn::text
