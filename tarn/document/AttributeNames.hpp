// The names of the attributes on a start tag, to tell a second one of the same name.
#pragma once

#include "tarn/document/Bytes.hpp"
#include "tarn/document/StackIndex.hpp"

#include <cstddef>
#include <string_view>
#include <vector>

namespace tarn::document::detail {

/// A set of expanded names. A number stands for each namespace.
class AttributeNames
{
public:
    /// Adds a name, unless it is there already. If that throws, nothing has changed.
    /// @returns whether it was new.
    bool add(std::size_t space, std::string_view localName)
    {
        const std::uint64_t hash = hashOf(localName, space);
        const std::uint64_t bit = std::uint64_t{1} << hash % 64;
        if ((seen & bit) != 0 && isThere(hash, space, localName)) {
            return false;
        }
        char* const end = characters.room(localName.size());
        Name& name = names.emplace_back();
        name.hash = hash;
        name.space = space;
        name.begin = characters.size();
        name.length = localName.size();
        characters.endAt(put(end, localName));
        seen |= bit;
        return true;
    }

    void clear()
    {
        names.clear();
        characters.shrinkTo(0);
        seen = 0;
        index.shrinkTo(0);
    }

private:
    struct Name
    {
        std::uint64_t hash;
        std::size_t space;
        std::size_t begin;
        std::size_t length;
    };

    bool isThere(std::uint64_t hash, std::size_t space, std::string_view localName);

    std::vector<Name> names;
    Bytes characters;
    /// A bit for each hash that there is, by its lower bits.
    std::uint64_t seen = 0;
    /// Of the first so many names.
    StackIndex index;
};

} // namespace tarn::document::detail
