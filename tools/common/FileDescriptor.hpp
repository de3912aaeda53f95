// An owned file descriptor.
#pragma once

#include "common/system_error.hpp"

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

    /// Gives up the ownership.
    int release() { return std::exchange(number, -1); }

private:
    int number;
};

} // namespace tarn::tools
