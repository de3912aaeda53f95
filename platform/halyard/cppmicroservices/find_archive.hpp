// Where in a file a zip archive lies.
#pragma once

#include "halyard/cppmicroservices/readable_file.hpp"

#include <optional>

namespace halyard::cppmicroservices {

/// Finds the archive in @p file: in the section `.us_resources` of a shared library, or else at the
/// end of the file. What the archive's own offsets count from may lie behind the beginning of the
/// range, if something else stands before the archive.
///
/// @return the bytes of the archive, with what stands before it; nothing if there is none.
/// @throws std::runtime_error that says what is wrong, if there is an archive without its end.
std::optional<byte_range> find_archive(const readable_file& file);

} // namespace halyard::cppmicroservices
