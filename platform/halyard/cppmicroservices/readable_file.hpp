// A regular file that is open for reading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>

namespace halyard::cppmicroservices {

/// Bytes of a file, from the first to before the last.
struct byte_range
{
    std::uint64_t first;
    std::uint64_t last;

    std::uint64_t size() const { return last - first; }
};

/// What tells a file from all others that exist at the same time, whichever path leads to it.
struct file_identity
{
    std::uint64_t device;
    std::uint64_t number;

    bool operator==(const file_identity&) const = default;
    bool operator<(const file_identity& other) const
    {
        return std::tie(device, number) < std::tie(other.device, other.number);
    }
};

class readable_file
{
public:
    /// @throws std::runtime_error that begins with @p path, if there is no regular file at @p path
    ///     or it cannot be opened.
    explicit readable_file(const std::string& path);

    readable_file(const readable_file&) = delete;
    readable_file& operator=(const readable_file&) = delete;
    ~readable_file();

    std::uint64_t size() const { return file_size; }
    const file_identity& identity() const { return own_identity; }

    /// Reads @p count bytes at @p offset; fewer only where the file ends.
    /// @return the number of bytes read.
    /// @throws std::system_error that begins with the file's path.
    std::size_t read(std::uint64_t offset, void* bytes, std::size_t count) const;

private:
    readable_file(std::string path, int descriptor) : path(std::move(path)), descriptor(descriptor)
    {
    }

    std::string path;
    int descriptor; // negative if there is none
    std::uint64_t file_size = 0;
    file_identity own_identity{};
};

} // namespace halyard::cppmicroservices
