#include "tarn/document/Scopes.hpp"

#include "tarn/document/names.hpp"

#include <charconv>
#include <iterator>
#include <limits>
#include <string_view>

namespace tarn::document::detail {

std::size_t Scopes::bind(std::string_view uri, std::string_view wished)
{
    if (isFree(wished)) {
        add(uri, wished);
    } else {
        constexpr int MOST_DIGITS = std::numeric_limits<decltype(generated)>::digits10 + 1;
        char prefix[sizeof("ns") + MOST_DIGITS] = "ns";
        std::string_view found;
        do {
            const auto* const end = std::to_chars(prefix + 2, std::end(prefix), ++generated).ptr;
            found = {prefix, end};
        } while (!isFree(found));
        add(uri, found);
    }
    return bindings.size() - 1;
}

void Scopes::setDefaultNamespace(std::string_view uri)
{
    const std::size_t begin = characters.size();
    characters.write(uri);
    defaultUri = begin;
    defaultLength = uri.size();
}

void Scopes::reset()
{
    goBackTo({0, 0, 0, 0});
    generated = 0;
    bindXml();
}

bool Scopes::isFree(std::string_view prefix) const
{
    return byPrefix.find(hashOf(prefix), [&](std::size_t binding) {
        return prefixOf(binding) == prefix;
    }) == NOT_BOUND;
}

void Scopes::add(std::string_view uri, std::string_view prefix)
{
    const std::size_t begin = characters.size();
    characters.write(uri);
    characters.write(prefix);
    bindings.push_back({begin, uri.size(), begin + uri.size(), prefix.size()});
    byUri.add(hashOf(uri));
    byPrefix.add(hashOf(prefix));
}

void Scopes::bindXml()
{
    add(XML_URI, "xml");
}

void Scopes::endBindings(std::size_t count)
{
    bindings.resize(count);
    byUri.shrinkTo(count);
    byPrefix.shrinkTo(count);
}

} // namespace tarn::document::detail
