#include "tools/common/OutputFile.hpp"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>

namespace tarn::tools {

namespace {

constexpr auto STANDARD_OUTPUT = "-";
constexpr mode_t PERMISSIONS = 0777;
constexpr mode_t PERMISSIONS_OF_NEW_FILE = 0666;

mode_t defaultPermissions()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return PERMISSIONS_OF_NEW_FILE & ~mask;
}

bool isStandardOutput(const struct stat& file)
{
    struct stat output;
    return ::fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == file.st_dev &&
           output.st_ino == file.st_ino;
}

} // namespace

OutputFile::OutputFile(const std::string& path, const std::string& program)
    : name(path == STANDARD_OUTPUT ? "<stdout>" : path), descriptor(open(path, program))
{
    if (descriptor.get() < 0) {
        throwSystemError(name);
    }
    setp(buffer.data(), buffer.data() + buffer.size());
}

void OutputFile::commit()
{
    sync();
    if (temporary) {
        writeToDisk();
    }
    if (::close(descriptor.release()) != 0) {
        throwSystemError(name);
    }
    if (temporary) {
        temporary->replaceTarget();
    }
}

OutputFile::int_type OutputFile::overflow(int_type byte)
{
    const char text = traits_type::to_char_type(byte);
    xsputn(&text, 1);
    return traits_type::not_eof(byte);
}

std::streamsize OutputFile::xsputn(const char* bytes, std::streamsize count)
{
    if (count >= LARGE_PIECE) {
        sync();
        write(bytes, count);
    } else {
        if (count > epptr() - pptr()) {
            sync();
        }
        std::copy_n(bytes, count, pptr());
        pbump(static_cast<int>(count));
    }
    return count;
}

int OutputFile::sync()
{
    const std::streamsize count = pptr() - pbase();
    setp(buffer.data(), buffer.data() + buffer.size()); // if it fails, nothing is written again
    write(buffer.data(), count);
    return 0;
}

void OutputFile::write(const char* bytes, std::streamsize count)
{
    std::streamsize written = 0;
    while (written < count) {
        const ssize_t step =
            ::write(descriptor.get(), bytes + written, static_cast<std::size_t>(count - written));
        if (step >= 0) {
            written += step;
        } else if (errno != EINTR) {
            throwSystemError(name);
        }
    }
}

/// Not every file system can do this on demand; that is no error.
void OutputFile::writeToDisk()
{
    int result;
    do {
        result = ::fsync(descriptor.get());
    } while (result != 0 && errno == EINTR);
    if (result != 0 && errno != EINVAL && errno != ENOTSUP) {
        throwSystemError(name);
    }
}

/// A descriptor for writing; on failure an empty one, with the error in `errno`.
FileDescriptor OutputFile::open(const std::string& path, const std::string& program)
{
    struct stat existing;
    const bool exists = path != STANDARD_OUTPUT && ::stat(path.c_str(), &existing) == 0;
    if (path == STANDARD_OUTPUT || (exists && isStandardOutput(existing))) {
        return FileDescriptor(STDOUT_FILENO);
    }
    if (!exists && errno != ENOENT) {
        return FileDescriptor(-1);
    }
    if (exists && !S_ISREG(existing.st_mode)) {
        return FileDescriptor(::open(path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    }
    if (exists && ::euidaccess(path.c_str(), W_OK) != 0) {
        return FileDescriptor(-1);
    }
    temporary.emplace(path, exists ? existing.st_mode & PERMISSIONS : defaultPermissions(),
                      program);
    return temporary->takeDescriptor();
}

} // namespace tarn::tools
