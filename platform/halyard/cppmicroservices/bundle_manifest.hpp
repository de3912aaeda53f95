// What a bundle says of itself in its manifest.
#pragma once

#include <string>

namespace halyard::cppmicroservices {

/// Reads the manifest @p json and returns the bundle's version in full, `0.0.0` if it gives none.
///
/// @throws std::runtime_error that says what is wrong, if @p json is not a JSON object with a
///     symbolic name, if its version is not one, or if it is nested too deep.
std::string read_bundle_version(const std::string& json);

} // namespace halyard::cppmicroservices
