// Reads zip archives with minizip.
#pragma once

#include "halyard/cppmicroservices/readable_file.hpp"

#include <cstddef>
#include <memory>
#include <string>

namespace halyard::cppmicroservices {

/// Goes through the entries of an archive, in the order of its directory.
///
/// Every operation throws std::runtime_error that says what is wrong if the archive is damaged, and
/// what the file throws if it cannot be read.
class zip_reader
{
public:
    /// @param file must outlive the reader.
    /// @param range the bytes that find_archive() has found in @p file.
    zip_reader(const readable_file& file, byte_range range);
    ~zip_reader();

    /// Goes to the first entry. @return false if there is none.
    bool go_to_first();

    /// Goes to the next entry. @return false if there is none.
    bool go_to_next();

    /// The name of the current entry: a path within the archive.
    const std::string& name() const { return entry_name; }

    /// The contents of the current entry, which are checked.
    /// @param most an entry with more bytes than these is refused.
    std::string contents(std::size_t most);

private:
    class stream;

    void read_name();
    [[noreturn]] void fail(const std::string& problem) const;

    std::unique_ptr<stream> source;
    void* archive;
    std::string entry_name;
};

} // namespace halyard::cppmicroservices
