// The namespaces that are declared on the open elements.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::document::detail {

/// No prefix is declared twice at the same time, so that each means one namespace wherever it is in
/// scope.
class Scopes
{
public:
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
    void goBackTo(const Mark& mark);

    /// The prefix of @p uri, or an empty one if it has none.
    std::string_view prefixOf(std::string_view uri) const;
    /// Binds @p uri, which has no prefix, to @p wished if that is free, or else to a generated
    /// prefix.
    std::string_view bind(std::string_view uri, std::string_view wished);

    /// The default namespace; empty if there is none.
    std::string_view defaultNamespace() const
    {
        return std::string_view(characters).substr(defaultUri, defaultLength);
    }
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
        return std::string_view(characters).substr(binding.uri, binding.uriLength);
    }
    std::string_view prefixOf(const Binding& binding) const
    {
        return std::string_view(characters).substr(binding.prefix, binding.prefixLength);
    }
    bool isFree(std::string_view prefix) const;

    std::vector<Binding> bindings;
    /// Holds all names and prefixes.
    std::string characters;
    std::size_t defaultUri = 0;
    std::size_t defaultLength = 0;
    /// The number of the last prefix that was generated.
    unsigned long long generated = 0;
};

} // namespace tarn::document::detail
