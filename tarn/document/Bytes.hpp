// Text in UTF-8 that is being put together.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace tarn::document::detail {

/// Copies @p size bytes, of which there are between one and two of @p Part, as the first ones and
/// the last ones, which can be the same in part.
template <class Part>
inline void putTwoParts(char* out, const char* text, std::size_t size)
{
    Part first;
    Part last;
    std::memcpy(&first, text, sizeof(Part));
    std::memcpy(&last, text + size - sizeof(Part), sizeof(Part));
    std::memcpy(out, &first, sizeof(Part));
    std::memcpy(out + size - sizeof(Part), &last, sizeof(Part));
}

/// Copies @p text to @p out. The short texts that names and values are take no call of a function.
/// @returns the place after it.
inline char* put(char* out, std::string_view text)
{
    const std::size_t size = text.size();
    if (size > 32) {
        std::memcpy(out, text.data(), size);
    } else if (size >= 16) {
        putTwoParts<std::array<char, 16>>(out, text.data(), size);
    } else if (size >= 8) {
        putTwoParts<std::uint64_t>(out, text.data(), size);
    } else if (size >= 4) {
        putTwoParts<std::uint32_t>(out, text.data(), size);
    } else if (size != 0) {
        out[0] = text[0];
        out[size / 2] = text[size / 2];
        out[size - 1] = text[size - 1];
    }
    return out + size;
}

/// Copies the characters of a literal.
template <std::size_t SIZE>
char* put(char* out, const char (&literal)[SIZE])
{
    constexpr std::size_t LENGTH = SIZE - 1; // without NUL
    std::memcpy(out, literal, LENGTH);
    return out + LENGTH;
}

/// Whether assertions are on.
#ifdef NDEBUG
constexpr bool CHECKS_ROOM = false;
#else
constexpr bool CHECKS_ROOM = true;
#endif

/// Bytes in a row. There can be room after them, which is written without asking for each byte
/// whether it fits.
class Bytes
{
public:
    std::size_t size() const { return used; }
    std::string_view view() const { return {storage.get(), used}; }
    /// The @p length bytes from @p begin, which are there.
    std::string_view part(std::size_t begin, std::size_t length) const
    {
        return {storage.get() + begin, length};
    }

    /// Whether room() would allocate nothing.
    bool hasRoom(std::size_t length) const { return length <= capacity - used; }

    /// @returns where the bytes end; @p length more can be written there.
    char* room(std::size_t length)
    {
        if (!hasRoom(length)) {
            grow(length);
        }
        if constexpr (CHECKS_ROOM) {
            given = length;
        }
        return storage.get() + used;
    }

    /// Takes in what has been written up to @p end, in the room that was given last.
    void endAt(const char* end)
    {
        const auto length = static_cast<std::size_t>(end - storage.get());
        assert(length - used <= given && "more was written than there was room for");
        used = length;
    }

    void write(std::string_view text) { endAt(put(room(text.size()), text)); }

    /// Keeps the first @p length bytes.
    void shrinkTo(std::size_t length) { used = length; }

    /// Takes away the first @p length bytes.
    void removeFirst(std::size_t length)
    {
        std::memmove(storage.get(), storage.get() + length, used - length);
        used -= length;
    }

private:
    void grow(std::size_t length)
    {
        constexpr std::size_t LEAST = 256;
        const std::size_t larger = std::max({LEAST, 2 * capacity, used + length});
        std::unique_ptr<char[]> moved(new char[larger]);
        put(moved.get(), view());
        storage = std::move(moved);
        capacity = larger;
    }

    std::unique_ptr<char[]> storage;
    std::size_t used = 0;
    std::size_t capacity = 0;
    /// What room() was last asked for, if that is checked.
    [[maybe_unused]] std::size_t given = 0;
};

} // namespace tarn::document::detail
