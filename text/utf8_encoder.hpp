// The kernels that turn UTF-16 into UTF-8: one interface, one file for each level of processors.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace tarn::text {

/// How far an encoder got.
struct EncodedUtf8
{
    const char16_t* read; ///< The first code unit that was not encoded.
    char* written;        ///< One past the last byte that belongs to the result.
};

/// The most bytes that an encoder writes for @p length code units.
constexpr std::size_t encodedUtf8Bound(std::size_t length)
{
    constexpr std::size_t BYTES_PER_UNIT = 3; // a surrogate pair needs four bytes for its two units
    // A vector store writes more than it keeps; the widest is 64 bytes, behind 16 NULs of padding.
    constexpr std::size_t STORE_OVERRUN = 80;
    return length * BYTES_PER_UNIT + STORE_OVERRUN;
}

/// Encodes the code units from @p first to @p last and stops at the end or before the first
/// unpaired surrogate. @p out must have room for `encodedUtf8Bound(last - first)` bytes.
EncodedUtf8 encodeUtf8(const char16_t* first, const char16_t* last, char* out);

using Utf8Encoder = EncodedUtf8 (*)(const char16_t* first, const char16_t* last, char* out);

/// An encoder for one level of processors, which does what encodeUtf8() does.
struct Utf8EncoderLevel
{
    std::string_view name;
    Utf8Encoder encode; ///< Null if this processor is below the level.
};

/// All levels, the best first. The last one, "portable", runs on every processor: it encodes one
/// code point at a time. encodeUtf8() uses the first that this processor can run.
std::array<Utf8EncoderLevel, 4> utf8EncoderLevels();

// The encoders of the levels, or null.
EncodedUtf8 encodeUtf8Portable(const char16_t* first, const char16_t* last, char* out);
Utf8Encoder utf8EncoderForSsse3();
Utf8Encoder utf8EncoderForAvx2();
Utf8Encoder utf8EncoderForAvx512();

} // namespace tarn::text
