// A short way to the namespace bindings that were used before.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace tarn::utils {

/// Finds entries of a map from namespace names to prefixes without searching it.
///
/// Most names that a document writes are in a namespace that it has used before. Namespace names
/// are long and begin alike, so that each step of a search compares many code units in vain.
class BindingCache
{
public:
    using Bindings = std::map<std::u16string, std::u16string>;

    explicit BindingCache(Bindings& bindings) : bindings(bindings) {}

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

    /// To be called when @p binding has been added to the map, after a search for it.
    void remember(Bindings::iterator binding) { slotOf(binding->first) = binding; }

    /// To be called before @p binding is removed from the map.
    void forget(Bindings::iterator binding) { slotOf(binding->first) = bindings.end(); }

private:
    static constexpr unsigned INDEX_BITS = 7;
    static constexpr std::size_t SLOTS = std::size_t{1} << INDEX_BITS;

    static bool same(const std::u16string& left, const std::u16string& right)
    {
        return left.size() == right.size() &&
               std::memcmp(left.data(), right.data(), left.size() * sizeof(char16_t)) == 0;
    }

    /// By the end of the name, which is where names differ.
    Bindings::iterator& slotOf(const std::u16string& namespaceUri)
    {
        std::uint64_t ending = namespaceUri.size();
        if (namespaceUri.size() >= sizeof ending / sizeof(char16_t)) {
            std::memcpy(&ending, &*namespaceUri.end() - sizeof ending / sizeof(char16_t),
                        sizeof ending);
            ending += namespaceUri.size();
        }
        constexpr std::uint64_t GOLDEN_RATIO =
            0x9E3779B97F4A7C15; // spreads what differs in any bit
        return slots[ending * GOLDEN_RATIO >> (64 - INDEX_BITS)];
    }

    Bindings& bindings;
    /// Each is the binding last looked for under its index, or the map's end. None before the first
    /// search: many a document uses no namespace.
    std::vector<Bindings::iterator> slots;
};

} // namespace tarn::utils
