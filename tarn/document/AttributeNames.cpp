#include "tarn/document/AttributeNames.hpp"

#include <algorithm>

namespace tarn::document::detail {

bool AttributeNames::isThere(std::uint64_t hash, std::size_t space, std::string_view localName)
{
    constexpr std::size_t FEW = 32;
    const auto isSame = [&](const Name& name) {
        return name.hash == hash && name.space == space &&
               characters.part(name.begin, name.length) == localName;
    };
    if (names.size() <= FEW) {
        return std::ranges::any_of(names, isSame);
    }
    while (index.size() < names.size()) {
        index.add(names[index.size()].hash);
    }
    return index.find(hash, [&](std::size_t name) { return isSame(names[name]); }) !=
           StackIndex::NONE;
}

} // namespace tarn::document::detail
