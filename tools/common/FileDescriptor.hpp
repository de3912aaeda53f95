// An owned file descriptor.
#pragma once

#include "common/system_error.hpp"

#include <cstddef>
#include <string>
#include <unistd.h>
#include <utility>

namespace tarn::tools {

using common::throwSystemError;

/// Closes its descriptor when it goes out of scope. Holds none if its number is negative.
class FileDescriptor
{
public:
    explicit FileDescriptor(int number) : number(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number(other.release()) {}
    ~FileDescriptor()
    {
        if (number >= 0) {
            ::close(number);
        }
    }

    int get() const { return number; }

    /// Reads at most @p size bytes into @p buffer. Returns how many; 0 at the end. An error is
    /// thrown as a `std::system_error` whose text begins with @p name.
    std::size_t read(char* buffer, std::size_t size, const std::string& name) const
    {
        ssize_t count;
        do {
            count = ::read(number, buffer, size);
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            throwSystemError(name);
        }
        return static_cast<std::size_t>(count);
    }

    /// Gives up the ownership.
    int release() { return std::exchange(number, -1); }

private:
    int number;
};

} // namespace tarn::tools
