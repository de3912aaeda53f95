#include "halyard/cppmicroservices/zip_reader.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <minizip/unzip.h>
#include <new>
#include <stdexcept>

namespace halyard::cppmicroservices {

/// A range of a file, for minizip. It reads a few bytes at a time, so reads go through a 4 KiB
/// window.
class zip_reader::stream
{
public:
    stream(const readable_file& file, byte_range range) : file(file), range(range) {}

    zlib_filefunc64_def functions()
    {
        zlib_filefunc64_def made{};
        made.opaque = this;
        made.zopen64_file = [](voidpf self, const void*, int) { return self; };
        made.zread_file = [](voidpf self, voidpf, void* bytes, uLong count) {
            return static_cast<stream*>(self)->read(static_cast<char*>(bytes), count);
        };
        made.ztell64_file = [](voidpf self, voidpf) {
            return ZPOS64_T{static_cast<stream*>(self)->position};
        };
        made.zseek64_file = [](voidpf self, voidpf, ZPOS64_T offset, int origin) {
            return static_cast<stream*>(self)->seek(offset, origin);
        };
        made.zclose_file = [](voidpf, voidpf) { return 0; };
        made.zerror_file = [](voidpf self, voidpf) {
            return static_cast<stream*>(self)->failure == nullptr ? 0 : -1;
        };
        return made;
    }

    /// What the file threw. minizip is in C, and no exception may pass through it.
    std::exception_ptr failure;

private:
    uLong read(char* bytes, uLong count) noexcept
    {
        uLong done = 0;
        while (done < count && position < range.size()) {
            if (position < window_first || position >= window_first + window_size) {
                if (!fill_window()) {
                    break;
                }
            }
            const std::uint64_t from = position - window_first;
            const uLong step = std::min<uLong>(count - done, window_size - from);
            std::memcpy(bytes + done, window.data() + from, step);
            position += step;
            done += step;
        }
        return done;
    }

    bool fill_window() noexcept
    {
        window_first = position;
        window_size = 0;
        try {
            window_size =
                file.read(range.first + position, window.data(),
                          std::min<std::uint64_t>(window.size(), range.size() - position));
        } catch (...) {
            failure = std::current_exception();
        }
        return window_size > 0;
    }

    long seek(std::uint64_t offset, int origin) noexcept
    {
        const std::uint64_t base = origin == ZLIB_FILEFUNC_SEEK_CUR   ? position
                                   : origin == ZLIB_FILEFUNC_SEEK_END ? range.size()
                                                                      : 0;
        if (offset > range.size() - base) {
            return -1;
        }
        position = base + offset;
        return 0;
    }

    const readable_file& file;
    const byte_range range;
    std::uint64_t position = 0; ///< From the beginning of the range, as window_first.
    std::uint64_t window_first = 0;
    std::size_t window_size = 0;
    std::array<char, 4096> window;
};

zip_reader::zip_reader(const readable_file& file, byte_range range)
    : source(std::make_unique<stream>(file, range))
{
    errno = 0; // for fail()
    zlib_filefunc64_def functions = source->functions();
    archive = unzOpen2_64("", &functions);
    // If memory for one way to find the directory runs out, minizip tries another and may succeed.
    if (archive == nullptr || errno == ENOMEM) {
        unzClose(archive);
        fail("the archive's directory is damaged");
    }
}

zip_reader::~zip_reader()
{
    unzClose(archive);
}

bool zip_reader::go_to_first()
{
    unz_global_info64 info;
    if (unzGetGlobalInfo64(archive, &info) != UNZ_OK || info.number_entry == 0) {
        return false;
    }
    if (unzGoToFirstFile(archive) != UNZ_OK) {
        fail("the archive's directory is damaged");
    }
    read_name();
    return true;
}

bool zip_reader::go_to_next()
{
    const int result = unzGoToNextFile(archive);
    if (result == UNZ_END_OF_LIST_OF_FILE) {
        return false;
    }
    if (result != UNZ_OK) {
        fail("the archive's directory is damaged");
    }
    read_name();
    return true;
}

void zip_reader::read_name()
{
    unz_file_info64 info;
    int result = unzGetCurrentFileInfo64(archive, &info, nullptr, 0, nullptr, 0, nullptr, 0);
    if (result == UNZ_OK) {
        entry_name.resize(info.size_filename);
        result = unzGetCurrentFileInfo64(archive, nullptr, entry_name.data(), info.size_filename,
                                         nullptr, 0, nullptr, 0);
    }
    if (result != UNZ_OK) {
        fail("the archive's directory is damaged");
    }
}

std::string zip_reader::contents(std::size_t most)
{
    constexpr unsigned long ENCRYPTED = 1; // a bit of the flags
    unz_file_info64 info;
    if (unzGetCurrentFileInfo64(archive, &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK) {
        fail("the archive's directory is damaged");
    }
    if ((info.flag & ENCRYPTED) != 0) {
        fail(entry_name + " is encrypted");
    }
    // minizip 1.1 does not read the true size, which is in another field then.
    constexpr std::uint32_t SIZE_HAS_64_BITS = 0xFFFFFFFF;
    if (info.uncompressed_size == SIZE_HAS_64_BITS) {
        fail(entry_name + " gives its size in 64 bits (ZIP64), which is not supported");
    }
    if (info.uncompressed_size > most) {
        fail(entry_name + " is too long: " + std::to_string(info.uncompressed_size) + " bytes, " +
             std::to_string(most) + " at most");
    }
    std::string bytes(info.uncompressed_size, '\0');
    errno = 0; // for fail()
    int result = unzOpenCurrentFile(archive);
    if (result == UNZ_OK) {
        const int count =
            unzReadCurrentFile(archive, bytes.data(), static_cast<unsigned>(bytes.size()));
        // Closing compares the checksum if all has been read.
        result = unzCloseCurrentFile(archive);
        if (count != static_cast<int>(bytes.size())) {
            result = UNZ_BADZIPFILE;
        }
    }
    if (result != UNZ_OK) {
        fail(entry_name + " is damaged");
    }
    return bytes;
}

void zip_reader::fail(const std::string& problem) const
{
    if (source->failure != nullptr) {
        std::rethrow_exception(source->failure);
    }
    // minizip does not report that an allocation failed, but malloc does.
    if (errno == ENOMEM) {
        throw std::bad_alloc();
    }
    throw std::runtime_error(problem);
}

} // namespace halyard::cppmicroservices
