// An input that a program reads in blocks of a given size.
#pragma once

#include "fuzz/require.hpp"
#include "tools/common/program.hpp"

#include <algorithm>
#include <string_view>
#include <sys/socket.h>

namespace tarn::fuzz {

/// The most bytes that an input can have, and the most blocks.
constexpr std::size_t LONGEST = 16'384;
constexpr std::size_t MOST_BLOCKS = 128;

/// The smallest size of the blocks of @p bytes.
inline std::size_t smallBlockSize(std::string_view bytes)
{
    return bytes.size() / MOST_BLOCKS + 1;
}

/// An input from which each read gives the next @p blockSize bytes of @p bytes.
inline tools::InputFile inBlocks(std::string_view bytes, std::size_t blockSize)
{
    using tools::FileDescriptor;
    int ends[2];
    require(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) == 0, "socketpair fails");
    const FileDescriptor writeEnd(ends[0]);
    FileDescriptor readEnd(ends[1]);
    for (; !bytes.empty(); bytes.remove_prefix(std::min(blockSize, bytes.size()))) {
        const std::size_t size = std::min(blockSize, bytes.size());
        require(::send(writeEnd.get(), bytes.data(), size, MSG_DONTWAIT) ==
                    static_cast<ssize_t>(size),
                "send fails");
    }
    return {std::move(readEnd), "input", [](std::uint64_t) {}};
}

} // namespace tarn::fuzz
