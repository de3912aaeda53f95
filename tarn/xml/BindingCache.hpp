// The namespace bindings in scope, with a short way to those that were used before.
#pragma once

#include "tarn/xml/Spares.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tarn::utils {

/// Finds, adds and removes entries of a map from namespace names to prefixes, if it can without
/// searching it.
///
/// Most names that a document writes are in a namespace that it has used before. Namespace names
/// are long and begin alike, so that each step of a search compares many code units in vain.
///
/// The nodes of the last few entries that were removed are kept with their names. Such a name is
/// not bound, which is known without a search, and often bound again on the next element.
class BindingCache
{
public:
    using Bindings = std::map<std::u16string, std::u16string>;

    explicit BindingCache(Bindings& bindings) : bindings(bindings) {}

    /// What is known of a namespace name.
    struct Place
    {
        /// Where it stands in the map or, unless its entry was kept, would stand.
        Bindings::iterator position;
        bool isBound;
        /// Whether the next node to be used again has this name.
        bool isKept;
    };

    Place find(const std::u16string& namespaceUri)
    {
        if (slots.empty()) {
            slots.assign(SLOTS, bindings.end());
        }
        Bindings::iterator& slot = slotOf(namespaceUri);
        if (slot != bindings.end() && same(slot->first, namespaceUri)) {
            return {slot, true, false};
        }
        if (removed.bringUp([&](const Node& node) { return same(node.key(), namespaceUri); })) {
            return {bindings.end(), false, true};
        }
        const auto position = bindings.lower_bound(namespaceUri);
        if (position == bindings.end() || !same(position->first, namespaceUri)) {
            return {position, false, false};
        }
        slot = position;
        return {position, true, false};
    }

    /// Adds an entry.
    /// @param place what the last search has said of @p namespaceUri: not bound.
    Bindings::iterator add(Place place, const std::u16string& namespaceUri,
                           const std::u16string& prefix)
    {
        Bindings::iterator added;
        if (Node node = removed.take(); node.empty()) {
            added = bindings.emplace_hint(place.position, namespaceUri, prefix);
        } else {
            node.mapped() = prefix;
            if (place.isKept) {
                added = bindings.insert(std::move(node)).position;
            } else {
                node.key() = namespaceUri;
                added = bindings.insert(place.position, std::move(node));
            }
        }
        slotOf(namespaceUri) = added;
        return added;
    }

    void remove(Bindings::iterator binding)
    {
        Bindings::iterator& slot = slotOf(binding->first);
        if (slot == binding) {
            slot = bindings.end();
        }
        removed.put(bindings.extract(binding));
    }

private:
    using Node = Bindings::node_type;

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
    Spares<Node, 4> removed;
};

} // namespace tarn::utils
