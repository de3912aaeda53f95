// An owned file descriptor, and the one way in which a failed system call becomes an exception.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace json2xml {

/// Throws the error in `errno`; its text is `subject: what is wrong`.
[[noreturn]] inline void throwSystemError(const std::string& subject)
{
    throw std::system_error(errno, std::generic_category(), subject);
}

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

} // namespace json2xml
