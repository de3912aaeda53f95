// KeySet: the keys of a map that has not ended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace xml2json {

/// Most maps have few keys: those are compared with one another. More of them go into a tree, and
/// not into a hash table, because the input could choose keys that all have the same hash value.
class KeySet
{
public:
    /// Returns whether @p key is new.
    bool insert(std::string_view key);

    /// Removes all keys, but keeps some memory for others.
    void clear();

private:
    struct Entry
    {
        std::size_t start; ///< In `texts`.
        std::size_t size;
        std::uint64_t firstBytes;
    };

    bool isAmongFew(std::string_view key, std::uint64_t firstBytes) const;

    /// The first keys, and their texts one after the other.
    std::vector<Entry> few;
    std::string texts;

    /// All keys, if there are many.
    std::set<std::string, std::less<>> tree;
};

} // namespace xml2json
