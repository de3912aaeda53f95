// How a failed system call becomes an exception.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace tarn::common {

/// Throws the error in `errno` as a `std::system_error` whose text is `subject: what is wrong`.
[[noreturn]] inline void throwSystemError(const std::string& subject)
{
    throw std::system_error(errno, std::generic_category(), subject);
}

} // namespace tarn::common
