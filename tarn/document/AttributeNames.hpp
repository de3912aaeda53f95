// The names of the attributes on a start tag, to tell a second one of the same name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::document::detail {

/// A hash set of qualified names, which stand for the expanded ones: in scope, each prefix means
/// one namespace, and each namespace has one prefix.
class AttributeNames
{
public:
    /// Adds a name, unless it is there already.
    /// @returns whether it was new.
    bool add(std::string_view prefix, std::string_view localName);
    void clear();

private:
    struct Entry
    {
        std::size_t begin;
        std::size_t length;
        std::size_t hash;
        std::size_t next; // in the chain of its slot, as in slots
    };

    std::string_view nameAt(std::size_t entry) const
    {
        return std::string_view(characters).substr(entries[entry].begin, entries[entry].length);
    }
    void spread();

    std::string characters;
    std::vector<Entry> entries;
    /// One more than the entry that was added last with each hash, modulo their number; 0 for none.
    /// Their number is a power of two, at least that of the entries.
    std::vector<std::size_t> slots;
};

} // namespace tarn::document::detail
