// The namespaces that are declared on the open elements.
#pragma once

#include "tarn/document/Bytes.hpp"
#include "tarn/document/StackIndex.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tarn::document::detail {

/// No prefix is declared twice at the same time, and no namespace has two prefixes, so that each
/// means the other wherever it is in scope. The prefix `xml` is always in scope.
class Scopes
{
public:
    static constexpr std::size_t NOT_BOUND = StackIndex::NONE;

    Scopes() { bindXml(); }

    /// A place to go back to.
    struct Mark
    {
        std::size_t bindings;
        std::size_t characters;
        std::size_t defaultUri;
        std::size_t defaultLength;
    };

    Mark mark() const { return {bindings.size(), characters.size(), defaultUri, defaultLength}; }

    /// Ends what has been declared since @p mark.
    void goBackTo(const Mark& mark)
    {
        if (bindings.size() != mark.bindings) {
            endBindings(mark.bindings);
        }
        characters.shrinkTo(mark.characters);
        defaultUri = mark.defaultUri;
        defaultLength = mark.defaultLength;
    }

    /// The number of the binding of @p uri, or NOT_BOUND.
    std::size_t find(std::string_view uri)
    {
        // A namespace's name often stands at the same address each time.
        const auto address = reinterpret_cast<std::uintptr_t>(uri.data());
        std::size_t& guess = guesses[(address >> 3 ^ address >> 8) % guesses.size()];
        if (guess >= bindings.size() || uriOf(bindings[guess]) != uri) {
            const std::size_t found = byUri.find(
                hashOf(uri), [&](std::size_t binding) { return uriOf(bindings[binding]) == uri; });
            if (found == NOT_BOUND) {
                return NOT_BOUND;
            }
            guess = found;
        }
        return guess;
    }

    std::string_view prefixOf(std::size_t binding) const
    {
        return characters.part(bindings[binding].prefix, bindings[binding].prefixLength);
    }

    /// Binds @p uri, which is not bound, to @p wished if that is free, or else to a generated
    /// prefix.
    /// @returns the number of the binding.
    std::size_t bind(std::string_view uri, std::string_view wished);

    /// The default namespace; empty if there is none.
    std::string_view defaultNamespace() const { return characters.part(defaultUri, defaultLength); }
    void setDefaultNamespace(std::string_view uri);

    void reset();

private:
    struct Binding
    {
        std::size_t uri; // where it begins
        std::size_t uriLength;
        std::size_t prefix;
        std::size_t prefixLength;
    };

    std::string_view uriOf(const Binding& binding) const
    {
        return characters.part(binding.uri, binding.uriLength);
    }
    bool isFree(std::string_view prefix) const;
    void add(std::string_view uri, std::string_view prefix);
    void bindXml();
    void endBindings(std::size_t count);

    std::vector<Binding> bindings;
    StackIndex byUri;
    StackIndex byPrefix;
    /// Holds all names and prefixes.
    Bytes characters;
    std::size_t defaultUri = 0;
    std::size_t defaultLength = 0;
    /// Bindings that have been found, by where the namespace's name stood.
    std::array<std::size_t, 32> guesses{};
    /// The number of the last prefix that was generated.
    unsigned long long generated = 0;
};

} // namespace tarn::document::detail
