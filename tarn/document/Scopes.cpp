#include "tarn/document/Scopes.hpp"

#include <algorithm>

namespace tarn::document::detail {

void Scopes::goBackTo(const Mark& mark)
{
    bindings.resize(mark.bindings);
    characters.resize(mark.characters);
    defaultUri = mark.defaultUri;
    defaultLength = mark.defaultLength;
}

std::string_view Scopes::prefixOf(std::string_view uri) const
{
    const auto found = std::find_if(bindings.rbegin(), bindings.rend(),
                                    [&](const Binding& binding) { return uriOf(binding) == uri; });
    return found == bindings.rend() ? std::string_view() : prefixOf(*found);
}

std::string_view Scopes::bind(std::string_view uri, std::string_view wished)
{
    std::string prefix(wished);
    while (!isFree(prefix)) {
        prefix = "ns" + std::to_string(++generated);
    }
    bindings.reserve(bindings.size() + 1);
    const std::size_t begin = characters.size();
    characters.append(uri).append(prefix);
    bindings.push_back({begin, uri.size(), begin + uri.size(), prefix.size()});
    return prefixOf(bindings.back());
}

void Scopes::setDefaultNamespace(std::string_view uri)
{
    const std::size_t begin = characters.size();
    characters.append(uri);
    defaultUri = begin;
    defaultLength = uri.size();
}

void Scopes::reset()
{
    goBackTo({0, 0, 0, 0});
    generated = 0;
}

bool Scopes::isFree(std::string_view prefix) const
{
    return std::ranges::none_of(
        bindings, [&](const Binding& binding) { return prefixOf(binding) == prefix; });
}

} // namespace tarn::document::detail
