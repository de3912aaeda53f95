// Files that hold bundles: what is in them, read without trusting them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace halyard::cppmicroservices {

struct bundle_description
{
    /// That of the bundle's folder in the archive.
    std::string name;
    /// In full: `MAJOR.MINOR.MICRO`, with `.QUALIFIER` if there is one; `0.0.0` if none is given.
    std::string version;
};

/// A file with one bundle or more.
struct bundle_file
{
    std::string location;
    /// In the order of their names.
    std::vector<bundle_description> bundles;
};

/// Reads which bundles are in the archive in the file at @p path.
///
/// The archive is trusted in nothing: what it may make this function read and keep is limited, and
/// nothing is extracted.
///
/// @return nothing if the file holds no archive, or one without bundles.
/// @throws std::runtime_error that begins with @p path, if the file cannot be read or if an archive
///     with bundles, or a manifest in it, is damaged.
std::optional<bundle_file> read_bundle_file(const std::string& path);

} // namespace halyard::cppmicroservices
