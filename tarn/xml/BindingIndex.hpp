// A hash index over the namespace bindings.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h> // SSE2, which every x86-64 processor has
#include <map>
#include <string>
#include <string_view>
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

    explicit BindingIndex(Bindings& bindings) : bindings(bindings) {}

    /// A binding and the hash of its name.
    struct Entry
    {
        Binding binding;
        std::uint32_t hash;
    };

    /// Returns the entry of @p namespaceUri; its binding is the map's end if the name is not bound.
    Entry find(const std::u16string& namespaceUri)
    {
        if (!slots.empty()) [[likely]] {
            const Entry& guessed = slots[guesses[guessOf(&namespaceUri)]];
            if (isTaken(guessed) && same(guessed.binding->first, namespaceUri)) [[likely]] {
                return guessed;
            }
        }
        return search(namespaceUri);
    }

    /// Makes room for one more binding, which may throw. Call it before the binding is added to the
    /// map.
    void reserve()
    {
        if (2 * (indexed + 1) > slots.size()) {
            rebuild(2 * slots.size());
        }
    }

    /// Call it after the binding has been added to the map, with the hash that find() gave for its
    /// name.
    void add(const Entry& entry) noexcept
    {
        for (std::size_t distance = 0; distance < PROBES; ++distance) {
            const std::size_t slot = wrapped(entry.hash + distance);
            if (!isTaken(slots[slot])) {
                slots[slot] = entry;
                lastAdded = slot;
                ++indexed;
                return;
            }
        }
        ++unindexed;
    }

    /// Call it before the binding is removed from the map.
    void remove(const Entry& entry) noexcept
    {
        std::size_t hole = slotWhere(
            entry.hash, [&](const Entry& other) { return other.binding == entry.binding; });
        if (hole == NOWHERE) {
            --unindexed;
            return;
        }
        // Later names move up, unless that would put them before the slot that their hash gives.
        for (std::size_t distance = 1; distance < PROBES; ++distance) {
            const std::size_t next = wrapped(hole + distance);
            if (!isTaken(slots[next])) {
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
    bool isTaken(const Entry& slot) const { return slot.binding != bindings.end(); }

    static constexpr std::size_t PROBES = 16;
    /// Room for the two bindings that every map has, and for the few that most documents add.
    static constexpr std::size_t FIRST_SIZE = 32;
    static_assert(FIRST_SIZE >= PROBES && std::has_single_bit(FIRST_SIZE));
    static constexpr std::size_t NOWHERE = static_cast<std::size_t>(-1);

    static constexpr std::size_t GUESSES = 256;

    /// Callers mostly keep a namespace name in one string, so that the address of the string says
    /// where its name stood last time.
    static std::size_t guessOf(const std::u16string* name)
    {
        constexpr std::uint64_t BITS = 0x9E3779B97F4A7C15; // any odd number with many bits
        constexpr int SHIFT = 64 - std::countr_zero(GUESSES);
        static_assert(std::has_single_bit(GUESSES));
        return reinterpret_cast<std::uintptr_t>(name) * BITS >> SHIFT;
    }

    /// Looks at all of the names at once, since nearly always they are the same.
    static bool same(const std::u16string& left, const std::u16string& right)
    {
        const std::size_t length = left.size();
        if (length != right.size()) {
            return false;
        }
        if (length < BLOCK / 2) {
            return std::memcmp(left.data(), right.data(), length * sizeof(char16_t)) == 0;
        }
        // Two blocks that overlap cover every length between one block and two.
        if (length < BLOCK) {
            const std::size_t last = length - BLOCK / 2;
            return areZero(
                _mm_or_si128(difference<BLOCK / 2>(left.data(), right.data()),
                             difference<BLOCK / 2>(left.data() + last, right.data() + last)));
        }
        const std::size_t last = length - BLOCK;
        __m128i all = difference<BLOCK>(left.data() + last, right.data() + last);
        for (std::size_t place = 0; place < last; place += BLOCK) {
            all = _mm_or_si128(all, difference<BLOCK>(left.data() + place, right.data() + place));
        }
        return areZero(all);
    }

    static constexpr std::size_t BLOCK = 32; ///< In code units.

    /// Zero if the @p LENGTH code units are the same.
    template <std::size_t LENGTH>
    static __m128i difference(const char16_t* left, const char16_t* right)
    {
        constexpr std::size_t WIDTH = sizeof(__m128i) / sizeof(char16_t);
        const auto load = [](const char16_t* units) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
        };
        __m128i all = _mm_setzero_si128();
        for (std::size_t place = 0; place < LENGTH; place += WIDTH) {
            all = _mm_or_si128(all, _mm_xor_si128(load(left + place), load(right + place)));
        }
        return all;
    }

    static bool areZero(__m128i bits)
    {
        return _mm_movemask_epi8(_mm_cmpeq_epi8(bits, _mm_setzero_si128())) == 0xFFFF;
    }

    /// Every code unit counts, since a document's namespace names can differ in any. Products are
    /// added up, so that they need not wait for each other.
    static std::uint32_t hashOf(std::u16string_view name)
    {
        constexpr std::size_t WORD = sizeof(std::uint64_t) / sizeof(char16_t);
        constexpr std::uint64_t STRIDE = 0xD1B54A32D192ED03; // any odd numbers with many bits
        constexpr std::uint64_t FIRST = 0x9E3779B97F4A7C15;
        const auto word = [](const char16_t* units) {
            std::uint64_t value;
            std::memcpy(&value, units, sizeof value);
            return value;
        };
        const char16_t* units = name.data();
        const std::size_t length = name.size();
        if (length < 2 * WORD) {
            std::uint64_t sum = length;
            for (const char16_t unit : name) {
                sum = (sum ^ unit) * STRIDE;
            }
            return static_cast<std::uint32_t>(sum >> 32 ^ sum >> 16);
        }
        std::uint64_t sum = length;
        std::uint64_t key = FIRST;
        for (std::size_t place = 0; place + 2 * WORD < length; place += 2 * WORD) {
            sum += mixed(word(units + place) ^ key, word(units + place + WORD) ^ STRIDE);
            key += STRIDE;
        }
        units += length - 2 * WORD; // the last words may overlap those before
        sum += mixed(word(units) ^ key, word(units + WORD) ^ STRIDE);
        return static_cast<std::uint32_t>(sum ^ sum >> 32);
    }

    /// Both halves of a product in which every bit of @p left and @p right takes part.
    static std::uint64_t mixed(std::uint64_t left, std::uint64_t right)
    {
        __extension__ using Product = unsigned __int128;
        const Product product = Product{left} * right;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

    std::size_t wrapped(std::size_t slot) const { return slot & (slots.size() - 1); }

    [[gnu::noinline]] Entry search(const std::u16string& namespaceUri)
    {
        if (slots.empty()) {
            guesses.resize(GUESSES);
            rebuild(FIRST_SIZE);
        }
        std::size_t slot = lastAdded;
        if (!isTaken(slots[slot]) || !same(slots[slot].binding->first, namespaceUri)) {
            const std::uint32_t hash = hashOf(namespaceUri);
            slot = slotWhere(hash, [&](const Entry& entry) {
                return entry.hash == hash && same(entry.binding->first, namespaceUri);
            });
            if (slot == NOWHERE) {
                return {unindexed == 0 ? bindings.end() : bindings.find(namespaceUri), hash};
            }
        }
        // Cut off, the number is that of another slot, and the guess only wrong.
        guesses[guessOf(&namespaceUri)] = static_cast<std::uint16_t>(slot);
        return slots[slot];
    }

    /// The slot of the entry for which @p isWanted, among those where an entry with @p hash can be.
    std::size_t slotWhere(std::uint32_t hash, auto&& isWanted) const
    {
        for (std::size_t distance = 0; distance < PROBES; ++distance) {
            const std::size_t slot = wrapped(hash + distance);
            if (!isTaken(slots[slot])) {
                break;
            }
            if (isWanted(slots[slot])) {
                return slot;
            }
        }
        return NOWHERE;
    }

    void rebuild(std::size_t size)
    {
        slots.assign(size, {bindings.end(), 0});
        indexed = 0;
        unindexed = 0;
        for (auto binding = bindings.begin(); binding != bindings.end(); ++binding) {
            add({binding, hashOf(binding->first)});
        }
    }

    Bindings& bindings;
    /// At least twice as many as there are names in them; their number is a power of two. A free
    /// slot has the map's end. None before the first search, because many documents use no
    /// namespace.
    std::vector<Entry> slots;
    std::size_t indexed = 0;
    /// How many names are in the map and not in the table.
    std::size_t unindexed = 0;
    /// The slot that was filled last: a namespace is mostly used as soon as it is bound.
    std::size_t lastAdded = 0;
    /// By the address of the string that holds a name: the slot where the name may be.
    std::vector<std::uint16_t> guesses;
};

} // namespace tarn::utils::detail
