// Inputs of a program that are only in memory.
#pragma once

#include "tools/common/program.hpp"

#include <algorithm>
#include <string_view>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tarn::tools::test {

/// A file.
inline InputFile inputOf(std::string_view text)
{
    FileDescriptor file(::memfd_create("input", MFD_CLOEXEC));
    while (!text.empty()) {
        const ssize_t count = ::write(file.get(), text.data(), text.size());
        if (count < 0) {
            throwSystemError("memfd");
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    ::lseek(file.get(), 0, SEEK_SET);
    return {std::move(file), "input", [](std::uint64_t) {}};
}

/// An input from which each read gives the next @p size bytes of @p text, in few reads.
inline InputFile inBlocks(std::string_view text, std::size_t size)
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        throwSystemError("socketpair");
    }
    const FileDescriptor writeEnd(ends[0]);
    FileDescriptor readEnd(ends[1]);
    for (; !text.empty(); text.remove_prefix(std::min(size, text.size()))) {
        if (::send(writeEnd.get(), text.data(), std::min(size, text.size()), MSG_DONTWAIT) < 0) {
            throwSystemError("send");
        }
    }
    return {std::move(readEnd), "input", [](std::uint64_t) {}};
}

} // namespace tarn::tools::test
