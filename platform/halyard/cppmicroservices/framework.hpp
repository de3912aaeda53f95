// The service framework of the process, whichever one the library was built with.
#pragma once

#include "halyard/cppmicroservices/bundle_file.hpp"

#include <cppmicroservices/Bundle.h>
#include <span>
#include <vector>

namespace halyard::cppmicroservices {

/// Installs the bundles of @p files, all of them or, if it throws, none. A file whose bundles are
/// installed already keeps these. Can be called by several threads at once.
///
/// @return the handles of the files' bundles, file by file.
/// @throws std::runtime_error that names the file whose bundles cannot be installed.
std::vector<::cppmicroservices::Bundle> install_into_framework(std::span<const bundle_file> files);

} // namespace halyard::cppmicroservices
