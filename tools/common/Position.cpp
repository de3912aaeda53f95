#include "tools/common/Position.hpp"

#include <stdexcept>

namespace tarn::tools {

namespace {

bool isLineFeed(char byte)
{
    return byte == '\n';
}

bool isFirstOfCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

/// Counts in a byte for as long as it can hold the count, so that the compiler can vectorise the
/// loop over bytes.
template <bool (*MATCHES)(char)>
std::uint64_t count(std::string_view text)
{
    std::uint64_t total = 0;
    while (!text.empty()) {
        constexpr std::size_t MOST_IN_A_BYTE = 255;
        const std::string_view counted = text.substr(0, MOST_IN_A_BYTE);
        std::uint8_t matches = 0;
        for (const char byte : counted) {
            matches += MATCHES(byte) ? 1 : 0;
        }
        total += matches;
        text.remove_prefix(counted.size());
    }
    return total;
}

} // namespace

Position advance(Position position, std::string_view text)
{
    if (const std::uint64_t lineFeeds = count<isLineFeed>(text); lineFeeds > 0) {
        position.line += lineFeeds;
        position.column = 1;
        text.remove_prefix(text.rfind('\n') + 1);
    }
    position.column += count<isFirstOfCharacter>(text);
    return position;
}

void failAt(const std::string& name, Position position, const std::string& problem)
{
    throw std::runtime_error(name + ':' + std::to_string(position.line) + ':' +
                             std::to_string(position.column) + ": " + problem);
}

} // namespace tarn::tools
