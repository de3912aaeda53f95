// Stand-in for the application's bundle installer.
#pragma once

#include "corda/filesystem/basic_path.hpp"

#include <cppmicroservices/Bundle.h>
#include <vector>

namespace halyard::cppmicroservices {

/// Installs the bundles found at @p path into the service framework of the process, and starts none
/// of them. A file that is installed again gives the same bundles as before, also by another path:
/// a symbolic link, a hard link, a relative path.
///
/// - A file: its bundles, in the order of their names. The file is a zip archive or holds one: a
///   shared library with the archive behind it or in its section `.us_resources`.
/// - A directory: the bundles of the files directly in it whose names end in `.so` or `.zip`, in
///   the order of the files' names. Files that hold no bundle archive are skipped, and a file that
///   the directory holds twice, under two names, counts once.
/// - An empty path names no bundle: none is installed.
///
/// A relative path begins at the current directory; symbolic links are followed. The bundles'
/// location is the absolute path of the file, without symbolic links, by which it was first
/// installed.
///
/// @return the handles of all bundles at @p path.
/// @throws std::runtime_error that names the file and says what is wrong, if there is nothing at
///     @p path, a file holds no bundle, an archive or a manifest in it is damaged, or a bundle of
///     the same name and version is installed from another file. No bundle has been installed then.
std::vector<::cppmicroservices::Bundle>
install(corda::filesystem::basic_path<char, char16_t,
                                      corda::filesystem::detail::path_traits<char, char16_t>>
            path);

} // namespace halyard::cppmicroservices
