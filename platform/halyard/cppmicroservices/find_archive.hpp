// Where in a file a zip archive lies.
#pragma once

#include "halyard/cppmicroservices/readable_file.hpp"

#include <optional>

namespace halyard::cppmicroservices {

/// Finds the archive in @p file: in the section `.us_resources` of a shared library, or else at the
/// end of the file.
///
/// @return the bytes of the archive; nothing if there is none. If other data precedes the archive,
///     they are part of the range, and the archive's offsets may start inside it.
/// @throws std::runtime_error that says what is wrong, if there is an archive without its end.
std::optional<byte_range> find_archive(const readable_file& file);

} // namespace halyard::cppmicroservices
