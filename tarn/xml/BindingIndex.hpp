// A hash index over the namespace bindings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace tarn::utils::detail {

/// Finds entries of a map from namespace names to prefixes, mostly without searching the map.
///
/// Most names that a document writes are in a namespace that it has used before. A search of the
/// map is slow because namespace names are long and begin alike.
class BindingIndex
{
public:
    using Bindings = std::map<std::u16string, std::u16string>;

    explicit BindingIndex(Bindings& bindings) : bindings(bindings) {}

    /// Where a namespace name stands in the map, or would stand.
    struct Place
    {
        Bindings::iterator position;
        bool isBound;
    };

    Place find(const std::u16string& namespaceUri)
    {
        if (slots.empty()) {
            slots.assign(SLOTS, bindings.end());
        }
        Bindings::iterator& slot = slotOf(namespaceUri);
        if (slot != bindings.end() && same(slot->first, namespaceUri)) {
            return {slot, true};
        }
        const auto position = bindings.lower_bound(namespaceUri);
        if (position == bindings.end() || !same(position->first, namespaceUri)) {
            return {position, false};
        }
        slot = position;
        return {position, true};
    }

    /// Must be called after @p binding has been added to the map, which follows a search for it.
    void remember(Bindings::iterator binding) { slotOf(binding->first) = binding; }

    /// Must be called before @p binding is removed from the map.
    void forget(Bindings::iterator binding) { slotOf(binding->first) = bindings.end(); }

private:
    static constexpr unsigned INDEX_BITS = 7;
    static constexpr std::size_t SLOTS = std::size_t{1} << INDEX_BITS;

    static bool same(const std::u16string& left, const std::u16string& right)
    {
        return left.size() == right.size() &&
               std::memcmp(left.data(), right.data(), left.size() * sizeof(char16_t)) == 0;
    }

    /// Chosen by the length and the last code units of the name, since names differ at their end.
    Bindings::iterator& slotOf(const std::u16string& namespaceUri)
    {
        constexpr std::size_t ENDING = sizeof(std::uint64_t) / sizeof(char16_t);
        std::uint64_t key = namespaceUri.size();
        if (namespaceUri.size() >= ENDING) {
            std::uint64_t ending;
            std::memcpy(&ending, namespaceUri.data() + namespaceUri.size() - ENDING, sizeof ending);
            key += ending;
        }
        // Multiplied by the golden ratio, any bit of the key changes the highest bits.
        constexpr std::uint64_t GOLDEN_RATIO = 0x9E3779B97F4A7C15;
        return slots[key * GOLDEN_RATIO >> (64 - INDEX_BITS)];
    }

    Bindings& bindings;
    /// Each is the binding that was last found under its number, or the map's end. Allocated at the
    /// first search, because many documents use no namespace.
    std::vector<Bindings::iterator> slots;
};

} // namespace tarn::utils::detail
