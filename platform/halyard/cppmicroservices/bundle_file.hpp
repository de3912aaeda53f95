// Files that hold bundles: what is in them, read without trusting them.
#pragma once

#include "halyard/cppmicroservices/readable_file.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace halyard::cppmicroservices {

// What one archive may make a program read and keep.
inline constexpr std::size_t MOST_BUNDLES = 1000;
inline constexpr std::size_t LONGEST_MANIFEST = 1 << 20;          ///< In bytes.
inline constexpr std::size_t LONGEST_OF_ALL_MANIFESTS = 16 << 20; ///< Together, in bytes.

struct bundle_description
{
    /// The name of the bundle's folder in the archive.
    std::string name;
    /// In full: `MAJOR.MINOR.MICRO`, with `.QUALIFIER` if there is one; `0.0.0` if none is given.
    std::string version;
};

/// A file with one bundle or more.
struct bundle_file
{
    std::string location;
    file_identity identity;
    /// In the order of their names.
    std::vector<bundle_description> bundles;
};

/// Reads which bundles are in the archive in the file at @p path.
///
/// The archive is untrusted: what this function reads and keeps of it is limited, and nothing is
/// extracted.
///
/// @return nothing if the file holds no archive, or one without bundles.
/// @throws std::runtime_error that begins with @p path, if the file cannot be read or if an archive
///     with bundles, or a manifest in it, is damaged or exceeds a limit.
std::optional<bundle_file> read_bundle_file(const std::string& path);

} // namespace halyard::cppmicroservices
