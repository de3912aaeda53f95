#include "tools/xml2json/KeySet.hpp"

#include <algorithm>
#include <cstring>

namespace xml2json {

namespace {

/// The first eight bytes of @p key, which tell most keys apart.
std::uint64_t firstBytesOf(std::string_view key)
{
    std::uint64_t bytes = 0;
    if (key.size() >= sizeof(bytes)) {
        std::memcpy(&bytes, key.data(), sizeof(bytes));
    } else {
        for (const char byte : key) {
            bytes = bytes << 8 | static_cast<unsigned char>(byte);
        }
    }
    return bytes;
}

} // namespace

bool KeySet::insert(std::string_view key)
{
    constexpr std::size_t FEW = 16;
    if (!tree.empty()) {
        return tree.emplace(key).second;
    }
    const std::uint64_t firstBytes = firstBytesOf(key);
    if (isAmongFew(key, firstBytes)) {
        return false;
    }
    if (few.size() == FEW) {
        for (const Entry& entry : few) {
            tree.emplace(texts, entry.start, entry.size);
        }
        return tree.emplace(key).second;
    }
    few.push_back({texts.size(), key.size(), firstBytes});
    texts += key;
    return true;
}

void KeySet::clear()
{
    constexpr std::size_t KEPT_SIZE = 1024;
    few.clear();
    texts.clear();
    if (texts.capacity() > KEPT_SIZE) {
        texts.shrink_to_fit();
    }
    tree.clear();
}

bool KeySet::isAmongFew(std::string_view key, std::uint64_t firstBytes) const
{
    return std::ranges::any_of(few, [&](const Entry& entry) {
        return entry.firstBytes == firstBytes && entry.size == key.size() &&
               std::memcmp(texts.data() + entry.start, key.data(), key.size()) == 0;
    });
}

} // namespace xml2json
