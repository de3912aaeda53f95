#include "tools/common/Position.hpp"

#include <algorithm>
#include <stdexcept>

namespace tarn::tools {

namespace {

bool isContinuationByte(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

} // namespace

Position advance(Position position, std::string_view text)
{
    if (const auto lineFeeds = std::ranges::count(text, '\n'); lineFeeds > 0) {
        position.line += static_cast<std::uint64_t>(lineFeeds);
        position.column = 1;
        text.remove_prefix(text.rfind('\n') + 1);
    }
    position.column += static_cast<std::uint64_t>(
        std::ranges::count_if(text, [](char byte) { return !isContinuationByte(byte); }));
    return position;
}

void failAt(const std::string& name, Position position, const std::string& problem)
{
    throw std::runtime_error(name + ':' + std::to_string(position.line) + ':' +
                             std::to_string(position.column) + ": " + problem);
}

} // namespace tarn::tools
