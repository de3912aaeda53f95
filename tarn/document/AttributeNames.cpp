#include "tarn/document/AttributeNames.hpp"

#include <algorithm>

namespace tarn::document::detail {

bool AttributeNames::add(std::string_view prefix, std::string_view localName)
{
    const std::size_t begin = characters.size();
    characters.append(prefix).append(prefix.empty() ? "" : ":").append(localName);
    const std::string_view name = std::string_view(characters).substr(begin);
    const std::size_t hash = std::hash<std::string_view>()(name);
    if (entries.size() == slots.size()) {
        spread();
    }
    std::size_t& slot = slots[hash & (slots.size() - 1)];
    for (std::size_t other = slot; other != 0; other = entries[other - 1].next) {
        if (nameAt(other - 1) == name) {
            characters.resize(begin);
            return false;
        }
    }
    entries.push_back({begin, name.size(), hash, slot});
    slot = entries.size();
    return true;
}

void AttributeNames::clear()
{
    for (const Entry& entry : entries) {
        slots[entry.hash & (slots.size() - 1)] = 0;
    }
    entries.clear();
    characters.clear();
}

void AttributeNames::spread()
{
    constexpr std::size_t FIRST_SIZE = 16;
    slots.assign(std::max(FIRST_SIZE, 2 * slots.size()), 0);
    for (std::size_t entry = 0; entry < entries.size(); ++entry) {
        std::size_t& slot = slots[entries[entry].hash & (slots.size() - 1)];
        entries[entry].next = slot;
        slot = entry + 1;
    }
}

} // namespace tarn::document::detail
