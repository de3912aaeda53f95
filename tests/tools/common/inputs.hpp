// Inputs of a program that are only in memory.
#pragma once

#include "tools/common/program.hpp"

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

/// An input of @p text, which must be short, that comes one byte at a time.
inline InputFile byteByByte(std::string_view text)
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        throwSystemError("socketpair");
    }
    const FileDescriptor writeEnd(ends[1]);
    for (const char& byte : text) {
        ::send(writeEnd.get(), &byte, 1, 0); // what is sent is read alone
    }
    return {FileDescriptor(ends[0]), "input", [](std::uint64_t) {}};
}

} // namespace tarn::tools::test
