#include "halyard/cppmicroservices/readable_file.hpp"

#include "common/system_error.hpp"

#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace halyard::cppmicroservices {

readable_file::readable_file(const std::string& path)
    // Without O_NONBLOCK, opening a pipe would wait for somebody who writes to it.
    : readable_file(path, ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
{
    struct stat status;
    if (descriptor == -1 || ::fstat(descriptor, &status) != 0) {
        tarn::common::throwSystemError(path);
    }
    if (!S_ISREG(status.st_mode)) {
        throw std::runtime_error(path + ": neither a file nor a directory");
    }
    file_size = static_cast<std::uint64_t>(status.st_size);
    own_identity = {status.st_dev, status.st_ino};
}

readable_file::~readable_file()
{
    if (descriptor != -1) {
        ::close(descriptor);
    }
}

std::size_t readable_file::read(std::uint64_t offset, void* bytes, std::size_t count) const
{
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = ::pread(descriptor, static_cast<char*>(bytes) + done, count - done,
                                    static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            tarn::common::throwSystemError(path);
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

} // namespace halyard::cppmicroservices
