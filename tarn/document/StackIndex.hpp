// A hash table of what ends in the reverse order of its beginning.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace tarn::document::detail {

/// The first @p length bytes, at most eight, as a number.
inline std::uint64_t upToEight(const char* bytes, std::size_t length)
{
    const auto load = [bytes](auto number, std::size_t place) {
        std::memcpy(&number, bytes + place, sizeof(number));
        return std::uint64_t{number};
    };
    const auto byte = [&](std::size_t place) { return load(std::uint8_t{}, place); };
    // The first ones and the last ones, which can be the same in part.
    return length >= 4   ? load(std::uint32_t{}, 0) | load(std::uint32_t{}, length - 4) << 32
           : length != 0 ? byte(0) | byte(length / 2) << 8 | byte(length - 1) << 16
                         : 0;
}

inline std::uint64_t hashOf(std::string_view text, std::uint64_t seed = 0)
{
    constexpr std::uint64_t FACTOR = 0x9E3779B97F4A7C15; // 2^64 divided by the golden ratio
    const auto mixed = [](std::uint64_t hash, std::uint64_t bits) {
        hash = (hash ^ bits) * FACTOR;
        return hash ^ hash >> 32;
    };
    std::uint64_t hash = seed * FACTOR + text.size();
    for (; text.size() > 8; text.remove_prefix(8)) {
        hash = mixed(hash, upToEight(text.data(), 8));
    }
    return mixed(hash, upToEight(text.data(), text.size()));
}

/// Finds entries by a hash. The entries themselves are numbered from 0 and kept by the owner.
class StackIndex
{
public:
    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);

    std::size_t size() const { return links.size(); }

    /// @returns the newest entry with @p hash for which @p matches holds, or NONE. One entry has
    /// been added before.
    template <class Matches>
    std::size_t find(std::uint64_t hash, Matches matches) const
    {
        for (std::size_t entry = newest[slotOf(hash)]; entry != NONE; entry = links[entry].older) {
            if (links[entry].hash == hash && matches(entry)) {
                return entry;
            }
        }
        return NONE;
    }

    /// Adds the next entry. If that throws, nothing has changed.
    void add(std::uint64_t hash)
    {
        if (links.size() == newest.size()) {
            spread();
        }
        std::size_t& slot = newest[slotOf(hash)];
        links.push_back({hash, slot});
        slot = links.size() - 1;
    }

    /// Ends all but the first @p count entries.
    void shrinkTo(std::size_t count)
    {
        while (links.size() > count) {
            newest[slotOf(links.back().hash)] = links.back().older;
            links.pop_back();
        }
    }

private:
    struct Link
    {
        std::uint64_t hash;
        std::size_t older; // in the same slot
    };

    std::size_t slotOf(std::uint64_t hash) const { return hash & (newest.size() - 1); }

    void spread()
    {
        constexpr std::size_t LEAST = 16;
        std::vector<std::size_t> more(std::max(LEAST, 2 * newest.size()), NONE);
        links.reserve(more.size());
        newest.swap(more);
        for (std::size_t entry = 0; entry < links.size(); ++entry) {
            std::size_t& slot = newest[slotOf(links[entry].hash)];
            links[entry].older = slot;
            slot = entry;
        }
    }

    std::vector<Link> links;
    /// The newest entry of each slot. Their number is a power of two, at least that of the entries.
    std::vector<std::size_t> newest;
};

} // namespace tarn::document::detail
