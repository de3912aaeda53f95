// A hash index over the namespace bindings.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarn::utils::detail {

/// Finds entries of a map from namespace names to prefixes without searching the map, which is slow
/// because namespace names are long and begin alike.
///
/// A hash table with open addressing. A name stands in one of PROBES slots, from the one that its
/// hash gives onwards. A name that finds none of them free is not in the table, and a search that
/// fails goes on in the map while there is such a name. So names that were chosen to collide make
/// searches about as slow as those of the map.
class BindingIndex
{
public:
    using Bindings = std::map<std::u16string, std::u16string>;
    using Binding = Bindings::iterator;

    explicit BindingIndex(Bindings& bindings)
        : bindings(bindings), last{bindings.end(), 0}, lastButOne(last)
    {
    }

    /// Returns the binding of @p namespaceUri, or the map's end if it is not bound.
    Binding find(const std::u16string& namespaceUri)
    {
        if (!holds(last, namespaceUri)) {
            std::swap(last, lastButOne);
            if (!holds(last, namespaceUri)) {
                last = search(namespaceUri);
            }
        }
        return last.binding;
    }

    /// Makes room for one more binding, which may throw. Call it after a search for the name and
    /// before its binding is added to the map.
    void reserve()
    {
        if (2 * (indexed + 1) > slots.size()) {
            rebuild(2 * slots.size());
        }
    }

    /// Call it after @p binding has been added to the map. Its name must be the one that find() was
    /// called with last.
    void add(Binding binding) noexcept
    {
        last.binding = binding;
        insert(last);
    }

    /// Call it before @p binding, which find() has returned last, is removed from the map.
    void remove(Binding binding) noexcept
    {
        std::size_t hole = slotOf(last.hash, binding->first);
        last.binding = bindings.end();
        if (hole == NOWHERE) {
            --unindexed;
            return;
        }
        // Later names move up, unless that would put them before the slot that their hash gives.
        for (std::size_t distance = 1; distance < PROBES; ++distance) {
            const std::size_t next = wrapped(hole + distance);
            if (slots[next].binding == bindings.end()) {
                break;
            }
            if (wrapped(next - wrapped(slots[next].hash)) >= distance) {
                slots[hole] = slots[next];
                hole = next;
                distance = 0;
            }
        }
        slots[hole].binding = bindings.end();
        --indexed;
    }

private:
    struct Slot
    {
        /// The map's end if there is none.
        Binding binding;
        std::uint32_t hash;
    };

    bool holds(const Slot& slot, const std::u16string& namespaceUri) const
    {
        return slot.binding != bindings.end() && same(slot.binding->first, namespaceUri);
    }

    static constexpr std::size_t PROBES = 16;
    /// Room for the two bindings that every map has, and for the few that most documents add.
    static constexpr std::size_t FIRST_SIZE = 32;
    static_assert(FIRST_SIZE >= PROBES && std::has_single_bit(FIRST_SIZE));
    static constexpr std::size_t NOWHERE = static_cast<std::size_t>(-1);

    static bool same(const std::u16string& left, const std::u16string& right)
    {
        return left.size() == right.size() &&
               std::memcmp(left.data(), right.data(), left.size() * sizeof(char16_t)) == 0;
    }

    /// Every code unit counts, since a document's namespace names can differ in any.
    static std::uint32_t hashOf(std::u16string_view name)
    {
        constexpr std::size_t WORD = sizeof(std::uint64_t) / sizeof(char16_t);
        const auto word = [](const char16_t* units) {
            std::uint64_t value;
            std::memcpy(&value, units, sizeof value);
            return value;
        };
        std::uint64_t hash = name.size();
        const char16_t* units = name.data();
        std::size_t left = name.size();
        for (; left > 2 * WORD; left -= 2 * WORD, units += 2 * WORD) {
            hash = mixed(word(units) ^ hash, word(units + WORD));
        }
        if (left >= WORD) {
            return static_cast<std::uint32_t>(mixed(word(units) ^ hash, word(units + left - WORD)));
        }
        std::uint64_t rest = 0;
        for (; left > 0; --left) {
            rest = rest << 16 | *units++;
        }
        return static_cast<std::uint32_t>(mixed(rest, hash));
    }

    /// Both halves of a product in which every bit of @p left and @p right takes part.
    static std::uint64_t mixed(std::uint64_t left, std::uint64_t right)
    {
        constexpr std::uint64_t LEFT_BITS = 0x9E3779B97F4A7C15; // any odd numbers with many bits
        constexpr std::uint64_t RIGHT_BITS = 0xD1B54A32D192ED03;
        __extension__ using Product = unsigned __int128;
        const Product product = Product{left ^ LEFT_BITS} * (right ^ RIGHT_BITS);
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

    std::size_t wrapped(std::size_t slot) const { return slot & (slots.size() - 1); }

    Slot search(const std::u16string& namespaceUri)
    {
        if (slots.empty()) {
            rebuild(FIRST_SIZE);
        }
        const std::uint32_t hash = hashOf(namespaceUri);
        const std::size_t slot = slotOf(hash, namespaceUri);
        if (slot != NOWHERE) {
            return slots[slot];
        }
        return {unindexed == 0 ? bindings.end() : bindings.find(namespaceUri), hash};
    }

    /// The slot that holds @p namespaceUri.
    std::size_t slotOf(std::uint32_t hash, const std::u16string& namespaceUri) const
    {
        for (std::size_t distance = 0; distance < PROBES; ++distance) {
            const std::size_t slot = wrapped(hash + distance);
            const auto& [binding, itsHash] = slots[slot];
            if (binding == bindings.end()) {
                break;
            }
            if (itsHash == hash && same(binding->first, namespaceUri)) {
                return slot;
            }
        }
        return NOWHERE;
    }

    void insert(const Slot& added) noexcept
    {
        for (std::size_t distance = 0; distance < PROBES; ++distance) {
            Slot& slot = slots[wrapped(added.hash + distance)];
            if (slot.binding == bindings.end()) {
                slot = added;
                ++indexed;
                return;
            }
        }
        ++unindexed;
    }

    void rebuild(std::size_t size)
    {
        slots.assign(size, {bindings.end(), 0});
        indexed = 0;
        unindexed = 0;
        for (auto binding = bindings.begin(); binding != bindings.end(); ++binding) {
            insert({binding, hashOf(binding->first)});
        }
    }

    Bindings& bindings;
    /// What find() returned last and before that, each with the hash of the name that was looked
    /// for. Most names are in the namespace of the name before, and a declaration is itself a name
    /// in the namespace of declarations.
    Slot last;
    Slot lastButOne;
    /// At least twice as many as there are names in them; their number is a power of two. None
    /// before the first search, because many documents use no namespace.
    std::vector<Slot> slots;
    std::size_t indexed = 0;
    /// How many names are in the map and not in the table.
    std::size_t unindexed = 0;
};

} // namespace tarn::utils::detail
